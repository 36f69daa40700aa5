#pragma once

// What every application annotation class adds to its engine kind: made from bounds alone it
// takes the user's last settings, made from given properties (a file, an archive, an undo entry)
// it takes those as they are, and it never tells of its own changes — the view does. Main thread
// only.

#include <QRectF>
#include <QString>
#include <QVariantMap>

template <class Kind> class FDAnnotationClass : public Kind
{
public:
    using Kind::initWithBounds;
    bool initWithBounds(const QRectF &bounds) override
    {
        if (!Kind::initWithBounds(bounds))
            return false;
        if (!m_takesProperties)
            applyDefaults();
        return true;
    }
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override
    {
        m_takesProperties = true;
        const bool ok = Kind::initWithBounds(bounds, type, properties);
        m_takesProperties = false;
        return ok;
    }
    void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &) override { }

protected:
    // The user's last settings for this kind, after the engine's initialiser.
    virtual void applyDefaults() { }

private:
    bool m_takesProperties = false;
};
