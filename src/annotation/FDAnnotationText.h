#pragma once

// A note as the application makes and edits it: an icon from the user's last setting, an editing
// flag the editors keep, a hit area a little larger than the small icon, and copies made through
// the pasteboard form. Main thread only.

#include <kit/engine/PDFAnnotationText.h>

#include <memory>

class FDAnnotationText : public PDFAnnotationText
{
public:
    // Not editing.
    bool init() override;
    using PDFAnnotationText::initWithBounds;
    // A zero size becomes 24 by 24; the icon is "Ann_TextIconType".
    bool initWithBounds(const QRectF &bounds) override;
    // Takes its properties as given, without the user's settings.
    bool initWithBounds(
        const QRectF &bounds, const QString &type, const QVariantMap &properties) override;

    // True while an editor is open on it.
    bool isEditing() const { return m_isEditing; }
    void setIsEditing(bool editing) { m_isEditing = editing; }

    // The bounds grown by 2 on every side: the whole hit and selection area of the note.
    QRectF enclosedBounds() const;
    // The clone: a note on no page that has lost its icon type.
    std::shared_ptr<PDFAnnotation> copy() const;

    // The view tells of changes itself.
    void postPDFAnnotationVisualsChangedNotificationWithRect(const QRectF &rect) override;

private:
    bool m_isEditing = false;
    bool m_takesProperties = false;
};
