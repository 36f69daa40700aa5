#include "FDError.h"

#include <QCoreApplication>

const QString FDError::XDocumentErrorDomain = QStringLiteral("XDocumentErrorDomain");
const QString FDError::NSCocoaErrorDomain = QStringLiteral("NSCocoaErrorDomain");

FDError::FDError(QString domain, int code, QString localizedDescription,
    std::shared_ptr<const FDError> underlyingError)
    : m_domain(std::move(domain))
    , m_code(code)
    , m_localizedDescription(std::move(localizedDescription))
    , m_underlyingError(std::move(underlyingError))
{ }

FDError FDError::writeFileErrorWithLocalizedDescription(const QString &description)
{
    return FDError(XDocumentErrorDomain, WriteFileError, description);
}

FDError FDError::readFileErrorWithLocalizedDescription(const QString &description)
{
    return FDError(XDocumentErrorDomain, ReadFileError, description);
}

FDError FDError::readPasteboardErrorWithLocalizedDescription(const QString &description)
{
    return FDError(XDocumentErrorDomain, ReadPasteboardError, description);
}

FDError FDError::printDocumentErrorWithLocalizedDescription(const QString &description)
{
    return FDError(XDocumentErrorDomain, PrintDocumentError, description);
}

FDError FDError::userCancelledErrorWithUnderlyingError(const FDError &underlyingError)
{
    return FDError(NSCocoaErrorDomain, UserCancelledError, {},
        std::make_shared<const FDError>(underlyingError));
}

bool FDError::isUserCancelledError() const
{
    return m_domain == NSCocoaErrorDomain && m_code == UserCancelledError;
}

QString FDError::localizedDescription() const
{
    if (!m_localizedDescription.isEmpty())
        return m_localizedDescription;
    return QCoreApplication::translate(
        "FDError", "The operation couldn’t be completed. (%1 error %2.)")
        .arg(m_domain)
        .arg(m_code);
}
