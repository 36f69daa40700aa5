#pragma once

// A note as the application makes and edits it: an icon from the user's last setting, an editing
// flag the editors keep, a hit area a little larger than the small icon, and copies made through
// the pasteboard form. Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationText.h>

#include <memory>

class FDAnnotationText : public FDAnnotationClass<PDFAnnotationText>
{
public:
    // Not editing.
    bool init() override;

    // True while an editor is open on it.
    bool isEditing() const { return m_isEditing; }
    void setIsEditing(bool editing) { m_isEditing = editing; }

    // The bounds grown by 2 on every side: the whole hit and selection area of the note.
    QRectF enclosedBounds() const;
    // The clone: a note on no page that has lost its icon type.
    std::shared_ptr<PDFAnnotation> copy() const;

protected:
    // The icon of "Ann_TextIconType"; a zero size has become 24 by 24.
    void applyDefaults() override;

private:
    bool m_isEditing = false;
};
