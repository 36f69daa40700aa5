#pragma once

// How a document view sizes its pages: kept as it is, fitted to the width, or whole pages fitted.

enum class PDFViewScaleMode : int { none = 0, fitWidth = 1, fitPage = 2 };
