#pragma once

// Tells which of the application's and the engine's annotation classes an object belongs to, as
// a set of flags, with one pointer comparison per known class after the first sighting: the hot
// paths (hit tests over a whole page) can then dispatch without a chain of dynamic casts.

class PDFAnnotation;

namespace AnnotationKind {

enum Flag : unsigned {
    None = 0,
    // The engine's kinds: set for the engine's class and every subclass of it.
    Markup = 1u << 0,
    Ink = 1u << 1,
    Line = 1u << 2,
    Circle = 1u << 3,
    Square = 1u << 4,
    FreeText = 1u << 5,
    Text = 1u << 6,
    Stamp = 1u << 7,
    Shape = 1u << 8, // circle or square: has an interior colour
    // The application's classes, beside their engine kind.
    AppMarkup = 1u << 9,
    AppFreeText = 1u << 10,
    AppText = 1u << 11,
};

// The flags of the object's dynamic class. Any thread (each keeps its own table).
unsigned of(const PDFAnnotation &annotation);

} // namespace AnnotationKind
