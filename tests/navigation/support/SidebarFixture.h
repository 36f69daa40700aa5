#pragma once

// The sidebar tests' window helpers, and the outline of a saved file as two independent readers
// see it (qpdf's JSON, poppler's XML), both written in one form: "Title@page" with children in
// parentheses, siblings separated by commas; an item without a page has no "@".

#include "app/support/AppWindow.h"

#include <QPointer>
#include <QString>
#include <QUrl>

#include <memory>

class PDFOutline;

namespace SidebarFixture {

using AppWindow::closeWindow;
using AppWindow::makeWindow;
using AppWindow::openTab;
using AppWindow::waitForSaves;

// The tree under root (not the root itself), in the form above, pages counted from 1.
QString treeOf(const std::shared_ptr<PDFOutline> &root);
// The item at a path of child indexes such as "0.2" below root; null if there is none.
std::shared_ptr<PDFOutline> itemAt(const std::shared_ptr<PDFOutline> &root, const QString &path);

// The outline of a file as each reader prints it; a string starting with "error:" on failure.
QString outlineByQpdf(const QString &qpdf, const QString &path);
QString outlineByPoppler(const QString &pdftohtml, const QString &path);

} // namespace SidebarFixture
