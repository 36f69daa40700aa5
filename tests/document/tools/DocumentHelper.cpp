// A separate process for the document tests.
//   document_helper set-xattr FILE NAME_LENGTH   sets an attribute with a name of that many bytes
//   document_helper get-xattr FILE NAME_LENGTH   reads it; prints its bytes

#include <document/Common.h>

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

namespace {

int attributeCommand(const QStringList &arguments)
{
    const QUrl url = QUrl::fromLocalFile(arguments.at(2));
    const QString name(arguments.at(3).toInt(), QLatin1Char('n'));
    if (arguments.at(1) == QLatin1String("set-xattr")) {
        FDSetXAttr(url, name, "value");
        return 0;
    }
    const std::optional<QByteArray> value = FDGetXAttr(url, name);
    std::fputs(value ? value->constData() : "(nothing)", stdout);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() == 4
        && (arguments.at(1) == QLatin1String("set-xattr")
            || arguments.at(1) == QLatin1String("get-xattr")))
        return attributeCommand(arguments);
    std::fputs("usage: document_helper set-xattr|get-xattr FILE NAME_LENGTH\n", stderr);
    return 2;
}
