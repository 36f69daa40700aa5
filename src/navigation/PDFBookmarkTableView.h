#pragma once

// The bookmark list's table in the theme's colours; it takes the window's Delete command while
// it has the focus. Main thread only.

#include <kit/tabs/EditCommandResponder.h>

#include <QTableView>

#include <functional>

class PDFBookmarkTableView : public QTableView, public EditCommandResponder
{
    Q_OBJECT

public:
    explicit PDFBookmarkTableView(QWidget *parent = nullptr);
    ~PDFBookmarkTableView() override;

    void setDeleteCommand(std::function<bool()> validate, std::function<void()> perform);
    void onThemeChanged();

    bool respondsToEditCommand(const QString &command) const override;
    bool validateEditCommand(const QString &command) const override;
    void performEditCommand(const QString &command) override;

private:
    std::function<bool()> m_validateDelete;
    std::function<void()> m_performDelete;
};
