#pragma once

// Modal alerts of the whole application, with a handler that tests install to answer them
// without a dialog. Main thread only.

#include <QString>
#include <QStringList>

#include <functional>

class FDError;

struct AlertRequest
{
    enum Style { Warning, Informational, Critical };
    Style style = Warning;
    QString messageText;
    QString informativeText;
    // In the order shown, first is the default; none means a single "OK".
    QStringList buttons;
};

class Alert
{
public:
    // The first button answers 1000, the second 1001, the third 1002.
    enum Response { FirstButtonReturn = 1000, SecondButtonReturn = 1001, ThirdButtonReturn = 1002 };

    Alert() = delete;

    static int runModal(const AlertRequest &request);
    // The platform's alert for an error: its description as the message, one "OK" button.
    static AlertRequest requestWithError(const FDError &error);

    // Replaces the dialog by handler until it is reset with an empty function.
    static void setHandlerForTesting(std::function<int(const AlertRequest &)> handler);
};
