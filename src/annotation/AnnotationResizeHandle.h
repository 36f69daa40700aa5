#pragma once

// The handles by which an annotation is resized, as a bit set: a corner is the union of its two
// sides. A line uses only left (its start point) and right (its end point).

enum AnnotationResizeHandle : int {
    AnnotationResizeHandleNone = 0,
    AnnotationResizeHandleLeft = 1,
    AnnotationResizeHandleBottom = 2,
    AnnotationResizeHandleRight = 4,
    AnnotationResizeHandleTop = 8,
    AnnotationResizeHandleBottomLeft = AnnotationResizeHandleBottom | AnnotationResizeHandleLeft,
    AnnotationResizeHandleBottomRight = AnnotationResizeHandleBottom | AnnotationResizeHandleRight,
    AnnotationResizeHandleTopRight = AnnotationResizeHandleTop | AnnotationResizeHandleRight,
    AnnotationResizeHandleTopLeft = AnnotationResizeHandleTop | AnnotationResizeHandleLeft,
};
