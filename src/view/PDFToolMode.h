#pragma once

// The tool of a document tab. The values are sparse and fixed: code tests ranges of them (above
// 99 are annotation tools, 101 to 103 the markup tools).

enum PDFToolMode : int {
    PDFToolModeTextSelection = 0,
    PDFToolModeAreaSelection = 1,
    PDFToolModeHand = 2,
    PDFToolModeZoom = 3,
    PDFToolModeEraser = 5,
    PDFToolModeAnn = 100,
    PDFToolModeAnnHighlight = 101,
    PDFToolModeAnnUnderline = 102,
    PDFToolModeAnnStrikeOut = 103,
    PDFToolModeAnnFreeText = 104,
    PDFToolModeAnnText = 105,
    PDFToolModeAnnCircle = 110,
    PDFToolModeAnnSquare = 111,
    PDFToolModeAnnLine = 112,
    PDFToolModeAnnInk = 120,
    PDFToolModeAnnStamp = 121,
    PDFToolModeNone = 200,
};
