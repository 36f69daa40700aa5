#pragma once

// The tab of the compression function. The function itself is not part of this version: the
// tab only holds its place in the strip, under a title that can't be changed. Main thread only.

#include "FDContents.h"

class PDFWindowController;

class CompressContents : public FDContents
{
    Q_OBJECT

public:
    explicit CompressContents(QObject *parent = nullptr);

    QString title() const override;
    void setTitle(const QString &title) override;
    QString nibName() const override { return QStringLiteral("CompressContents"); }
    PDFWindowController *windowController();

protected:
    std::unique_ptr<QWidget> loadView() override;
};
