#pragma once

// Adding a child widget that keeps filling its parent, less a padding, as the parent resizes;
// the counterpart of a subview with flexible width and height. A hidden parent's resize reaches
// the child when the parent is shown, as Qt delivers it. Main thread only.

class QWidget;

enum class QKWindowOrderingMode { Above, Below };

// Makes child a child of parent, filling it with no padding, in front of its siblings, shown.
void qk_addSubview(QWidget *parent, QWidget *child);
// As above with a padding on the left and right (horizontal) and top and bottom (vertical), placed
// just above or below relativeTo (a sibling), or above or below all siblings when it is null.
void qk_addSubview(QWidget *parent, QWidget *child, double horizontalPadding,
    double verticalPadding, QKWindowOrderingMode positioned, QWidget *relativeTo);
