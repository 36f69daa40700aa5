#pragma once

// A box of text as the application makes and edits it: font, colours and no border from the
// user's last settings, an editing flag the editors keep, and the box a bare click opens.
// Main thread only.

#include "FDAnnotationClass.h"

#include <kit/engine/PDFAnnotationFreeText.h>

class FDAnnotationFreeText : public FDAnnotationClass<PDFAnnotationFreeText>
{
public:
    // Not editing.
    bool init() override;

    // True while an editor is open on it.
    bool isEditing() const { return m_isEditing; }
    void setIsEditing(bool editing) { m_isEditing = editing; }

    // See adjustBoundsIfNeeded of the free text extension.
    void adjustBoundsIfNeeded();

protected:
    // Font, text colour and size from the "Ann_FreeText*" settings; transparent, without a border.
    void applyDefaults() override;

private:
    bool m_isEditing = false;
};
