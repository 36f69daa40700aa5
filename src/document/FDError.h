#pragma once

// An error that reaches an alert: a domain, a code, a description for the user and perhaps the
// error that caused it. A value; copy freely, any thread.

#include <QString>

#include <memory>

class FDError
{
public:
    // The application's own domain; codes 1 write, 2 read, 3 pasteboard, 4 print.
    static const QString XDocumentErrorDomain;
    // The platform's domain of a cancellation by the user (code 3072).
    static const QString NSCocoaErrorDomain;
    enum Code {
        WriteFileError = 1,
        ReadFileError = 2,
        ReadPasteboardError = 3,
        PrintDocumentError = 4,
        UserCancelledError = 3072
    };

    FDError(QString domain, int code, QString localizedDescription = {},
        std::shared_ptr<const FDError> underlyingError = {});

    static FDError writeFileErrorWithLocalizedDescription(const QString &description);
    static FDError readFileErrorWithLocalizedDescription(const QString &description);
    static FDError readPasteboardErrorWithLocalizedDescription(const QString &description);
    static FDError printDocumentErrorWithLocalizedDescription(const QString &description);
    static FDError userCancelledErrorWithUnderlyingError(const FDError &underlyingError);

    bool isUserCancelledError() const;

    const QString &domain() const { return m_domain; }
    int code() const { return m_code; }
    // The given text; without one, the platform's generic sentence naming domain and code.
    QString localizedDescription() const;
    // Null when there is none.
    const FDError *underlyingError() const { return m_underlyingError.get(); }

private:
    QString m_domain;
    int m_code = 0;
    QString m_localizedDescription;
    std::shared_ptr<const FDError> m_underlyingError;
};
