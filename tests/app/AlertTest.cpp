#include <app/Alert.h>
#include <document/FDError.h>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

class AlertTest : public QObject
{
    Q_OBJECT

private slots:
    void answersByButtonPosition_data()
    {
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QString>("pressed");
        QTest::addColumn<int>("answer");
        const QStringList three { "Save", "Cancel", "Don't Save" };
        QTest::newRow("first") << three << "Save" << 1000;
        QTest::newRow("second") << three << "Cancel" << 1001;
        QTest::newRow("third") << three << "Don't Save" << 1002;
        QTest::newRow("none means OK") << QStringList() << "OK" << 1000;
    }

    void answersByButtonPosition()
    {
        QFETCH(QStringList, buttons);
        QFETCH(QString, pressed);
        QFETCH(int, answer);
        pressWhenShown(pressed);
        QCOMPARE(
            Alert::runModal({ AlertRequest::Critical, "Message", "Details", buttons }), answer);
        QCOMPARE(m_shown,
            QStringList({ "Message", "Details", QString::number(QMessageBox::Critical) })
                + (buttons.isEmpty() ? QStringList { "OK" } : buttons));

        pressWhenShown(QStringLiteral("OK"));
        const FDError error = FDError::writeFileErrorWithLocalizedDescription("Disk full.");
        QCOMPARE(Alert::runModal(Alert::requestWithError(error)), 1000);
        QCOMPARE(m_shown.first(), QStringLiteral("Disk full."));
    }

private:
    // Presses the button titled title on the next modal box and notes what the box showed.
    void pressWhenShown(const QString &title);
    QStringList m_shown;
};

void AlertTest::pressWhenShown(const QString &title)
{
    auto *poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, [this, poll, title] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        poll->stop();
        poll->deleteLater();
        m_shown = { box->text(), box->informativeText(), QString::number(box->icon()) };
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *button : buttons)
            m_shown.append(button->text());
        for (QAbstractButton *button : buttons) {
            if (button->text() == title)
                button->click();
        }
    });
    poll->start(10);
}

QTEST_MAIN(AlertTest)
#include "AlertTest.moc"
