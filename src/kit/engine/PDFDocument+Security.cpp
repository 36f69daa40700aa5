#include "PDFDocument.h"

#include "PDFDocumentPrivate.h"
#include "SaslPrep.h"

// Passwords and the permissions of encrypted documents.

bool PDFDocument::isEncrypted() const
{
    return d->encrypted;
}

bool PDFDocument::isLocked() const
{
    return d->locked;
}

bool PDFDocument::unlockWithPassword(const QString &password)
{
    if (!d->handle)
        return false;
    int result = 0;
    {
        const mu::Lock lock(d->handle->mutex());
        fz_context *ctx = mu::context();
        pdf_document *const doc = d->handle->doc();
        int revision = 0;
        mu::runQuietly(ctx, [&] {
            revision = pdf_to_int(ctx, pdf_dict_getp(ctx, pdf_trailer(ctx, doc), "Encrypt/R"));
        });
        // AES-256 passwords are prepared UTF-8; as typed is tried too, for files made by tools
        // that stored them unprepared.
        QList<QByteArray> candidates;
        if (revision >= 5)
            candidates.append(SaslPrep::prepared(password).toUtf8());
        if (!candidates.contains(password.toUtf8()))
            candidates.append(password.toUtf8());
        for (const QByteArray &candidate : candidates) {
            const char *const text = candidate.constData();
            mu::runQuietly(ctx, [&] { result = fz_authenticate_password(ctx, &doc->super, text); });
            if (result)
                break;
        }
    }
    if (!result)
        return false;
    if (d->locked) {
        d->locked = false;
        if (!d->loadContent())
            return false;
    }
    return true;
}

namespace {

bool hasPermission(const PDFDocumentPrivate &d, fz_permission permission)
{
    if (!d.handle)
        return false;
    const mu::Lock lock(d.handle->mutex());
    fz_context *ctx = mu::context();
    pdf_document *const doc = d.handle->doc();
    int allowed = 0;
    mu::Error failure;
    mu::run(ctx, failure, [&] { allowed = fz_has_permission(ctx, &doc->super, permission); });
    return allowed != 0;
}

} // namespace

bool PDFDocument::allowsPrinting() const
{
    return hasPermission(*d, FZ_PERMISSION_PRINT);
}

bool PDFDocument::allowsCopying() const
{
    return hasPermission(*d, FZ_PERMISSION_COPY);
}
