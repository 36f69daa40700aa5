#pragma once

// What the application asks of any view's document: an FDDocument answers from its own state, a
// plain PDFDocument reads as untitled and unchanged and ignores the setters. Main thread only.

#include <QUrl>

class PDFDocument;

QUrl fileURL(const PDFDocument &document);
void setFileURL(PDFDocument &document, const QUrl &url);
int numberOfChanges(const PDFDocument &document);
void setNumberOfChanges(PDFDocument &document, int count);
