#include <app/Alert.h>
#include <document/FDError.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

class AlertTest : public QObject
{
    Q_OBJECT

private slots:
    void answersByButtonPosition_data();
    void answersByButtonPosition();
    void testHandlerReplacesTheDialog();
    void errorAlertShowsTheDescription();

private:
    // Presses the button titled title of the next modal box; reports what the box showed.
    void pressWhenShown(const QString &title);
    QStringList m_shownButtons;
    QString m_shownText;
    QMessageBox::Icon m_shownIcon = QMessageBox::NoIcon;
};

void AlertTest::pressWhenShown(const QString &title)
{
    auto *timer = new QTimer(this);
    timer->setInterval(10);
    connect(timer, &QTimer::timeout, this, [this, timer, title] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        timer->deleteLater();
        timer->stop();
        m_shownButtons.clear();
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *button : buttons)
            m_shownButtons.append(button->text());
        m_shownText = box->text() + QLatin1Char('|') + box->informativeText();
        m_shownIcon = box->icon();
        for (QAbstractButton *button : buttons) {
            if (button->text() == title)
                button->click();
        }
    });
    timer->start();
}

void AlertTest::answersByButtonPosition_data()
{
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<QString>("pressed");
    QTest::addColumn<int>("answer");
    const QStringList three { "Save", "Cancel", "Don't Save" };
    QTest::newRow("first") << three << "Save" << 1000;
    QTest::newRow("second") << three << "Cancel" << 1001;
    QTest::newRow("third") << three << "Don't Save" << 1002;
    QTest::newRow("no buttons means OK") << QStringList() << "OK" << 1000;
}

void AlertTest::answersByButtonPosition()
{
    QFETCH(QStringList, buttons);
    QFETCH(QString, pressed);
    QFETCH(int, answer);
    pressWhenShown(pressed);
    const int response = Alert::runModal(
        { AlertRequest::Critical, QStringLiteral("Message"), QStringLiteral("Details"), buttons });
    QCOMPARE(response, answer);
    QCOMPARE(m_shownButtons, buttons.isEmpty() ? QStringList { QStringLiteral("OK") } : buttons);
    QCOMPARE(m_shownText, QStringLiteral("Message|Details"));
    QCOMPARE(m_shownIcon, QMessageBox::Critical);
}

void AlertTest::testHandlerReplacesTheDialog()
{
    QList<AlertRequest> seen;
    Alert::setHandlerForTesting([&seen](const AlertRequest &request) {
        seen.append(request);
        return 1001;
    });
    const int response = Alert::runModal(
        { AlertRequest::Warning, QStringLiteral("Quit?"), {}, { "Quit", "Cancel" } });
    Alert::setHandlerForTesting({});
    QCOMPARE(response, 1001);
    QCOMPARE(seen.size(), 1);
    QCOMPARE(seen.first().messageText, QStringLiteral("Quit?"));
}

void AlertTest::errorAlertShowsTheDescription()
{
    pressWhenShown(QStringLiteral("OK"));
    const AlertRequest request = Alert::requestWithError(
        FDError::writeFileErrorWithLocalizedDescription(QStringLiteral("Disk full.")));
    QCOMPARE(Alert::runModal(request), 1000);
    QCOMPARE(m_shownText, QStringLiteral("Disk full.|"));
    QCOMPARE(m_shownButtons, QStringList { QStringLiteral("OK") });
}

QTEST_MAIN(AlertTest)
#include "AlertTest.moc"
