#include "Alert.h"

#include <document/FDError.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace {

std::function<int(const AlertRequest &)> &testHandler()
{
    static std::function<int(const AlertRequest &)> handler;
    return handler;
}

QMessageBox::Icon iconFor(AlertRequest::Style style)
{
    switch (style) {
    case AlertRequest::Warning:
        return QMessageBox::Warning;
    case AlertRequest::Informational:
        return QMessageBox::Information;
    case AlertRequest::Critical:
        return QMessageBox::Critical;
    }
    qFatal("Alert: unknown style %d", int(style));
}

} // namespace

int Alert::runModal(const AlertRequest &request)
{
    if (testHandler())
        return testHandler()(request);

    QMessageBox box;
    box.setIcon(iconFor(request.style));
    box.setText(request.messageText);
    box.setInformativeText(request.informativeText);
    const QStringList titles = request.buttons.isEmpty()
        ? QStringList { QCoreApplication::translate("Alert", "OK") }
        : request.buttons;
    QList<QPushButton *> buttons;
    for (const QString &title : titles)
        buttons.append(box.addButton(title, QMessageBox::ActionRole));
    box.setDefaultButton(buttons.first());
    // As on the original platform, Escape answers the "Cancel" button, or the only one.
    for (QPushButton *button : std::as_const(buttons)) {
        if (button->text() == QLatin1String("Cancel")
            || button->text() == QCoreApplication::translate("Alert", "Cancel"))
            box.setEscapeButton(button);
    }
    if (buttons.size() == 1)
        box.setEscapeButton(buttons.first());
    box.exec();
    const qsizetype index = buttons.indexOf(qobject_cast<QPushButton *>(box.clickedButton()));
    return FirstButtonReturn + int(qMax<qsizetype>(index, 0));
}

AlertRequest Alert::requestWithError(const FDError &error)
{
    AlertRequest request;
    request.style = AlertRequest::Warning;
    request.messageText = error.localizedDescription();
    request.buttons = { QCoreApplication::translate("Alert", "OK") };
    return request;
}

void Alert::setHandlerForTesting(std::function<int(const AlertRequest &)> handler)
{
    testHandler() = std::move(handler);
}
