#!/usr/bin/python3
# Writes a small illustrated PDF for screenshots: sample-pdf.py OUT.pdf
import sys

PARAGRAPHS = [
    "Folidoc reads PDF documents in tabs and windows, one page or two pages side by side,",
    "continuously. Search finds every occurrence and lists it in the sidebar; the outline",
    "and bookmarks take you to the right place, and the reading position of each file is",
    "kept for the next time you open it.",
    "",
    "Highlight, underline or strike out text, draw with the pen, add lines, boxes, circles,",
    "notes and text boxes. Every change can be undone, and saving runs in the background",
    "while you go on reading. The pages editor adds, removes, turns and reorders pages.",
    "",
    "When another program changes the file, the document reloads where you were reading.",
    "The System theme follows the light or dark look of your desktop.",
]


def escape(text):
    return text.replace("\\", "\\\\").replace("(", "\\(").replace(")", "\\)")


def page_stream(number):
    ops = ["0.23 0.48 0.89 rg 72 690 468 4 re f 0.12 0.3 0.6 rg"]
    ops.append("BT /F2 28 Tf 72 710 Td (%s) Tj ET" % escape(
        "A reader for your PDF files" if number == 1 else "Chapter %d" % number))
    ops.append("0.13 0.13 0.14 rg")
    y = 650
    for line in PARAGRAPHS:
        if line:
            ops.append("BT /F1 12 Tf 72 %d Td (%s) Tj ET" % (y, escape(line)))
        y -= 18
    # A figure: bars of a chart.
    ops.append("0.9 0.92 0.95 rg 72 260 468 160 re f")
    for i, (h, colour) in enumerate([(60, "0.23 0.48 0.89"), (110, "0.25 0.64 0.25"),
                                     (85, "0.98 0.71 0.14"), (140, "0.86 0.27 0.24"),
                                     (95, "0.23 0.48 0.89")]):
        ops.append("%s rg %d 270 60 %d re f" % (colour, 100 + i * 85, h))
    ops.append("0.35 0.35 0.38 rg BT /F1 10 Tf 72 240 Td (%s) Tj ET" % escape(
        "Figure %d. Pages read per day, by kind of document." % number))
    ops.append("BT /F1 10 Tf 290 60 Td (%d) Tj ET" % number)
    return "\n".join(ops).encode("latin-1")


def build(pages):
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", None,
               b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
               b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica-Bold >>"]
    kids = []
    for number in range(1, pages + 1):
        stream = page_stream(number)
        objects.append(b"<< /Length %d >>\nstream\n" % len(stream) + stream + b"\nendstream")
        content = len(objects)
        annots = b""
        if number == 1:
            # A yellow highlight over the second line of text.
            objects.append(b"<< /Type /Annot /Subtype /Highlight /Rect [70 628 520 646] "
                           b"/QuadPoints [72 646 518 646 72 628 518 628] /C [1 0.85 0.1] "
                           b"/CA 0.5 /F 4 >>")
            annots = b" /Annots [%d 0 R]" % len(objects)
        objects.append(b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents %d 0 R "
                       b"/Resources << /Font << /F1 3 0 R /F2 4 0 R >> >>%s >>" % (content, annots))
        kids.append(len(objects))
    objects[1] = b"<< /Type /Pages /Kids [%s] /Count %d >>" % (
        b" ".join(b"%d 0 R" % k for k in kids), len(kids))
    out = bytearray(b"%PDF-1.4\n")
    offsets = []
    for i, body in enumerate(objects, 1):
        offsets.append(len(out))
        out += b"%d 0 obj\n" % i + body + b"\nendobj\n"
    xref = len(out)
    out += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    out += b"".join(b"%010d 00000 n \n" % o for o in offsets)
    out += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, xref)
    return bytes(out)


open(sys.argv[1], "wb").write(build(4))
