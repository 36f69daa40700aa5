#include "BenchCommand.h"

#include <QApplication>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <cstring>

std::map<QString, BenchCommand> &benchCommands()
{
    static std::map<QString, BenchCommand> commands;
    return commands;
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

double processMegabytes(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const qsizetype length = qsizetype(std::strlen(field));
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(length).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return 0;
}

void benchPrint(const QString &name, double value)
{
    std::printf("%s: %.2f\n", qPrintable(name), value);
    std::fflush(stdout);
}

// folidoc-bench SUBCOMMAND ARGS: one "name: value" line per figure.
int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY")
        && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const auto &commands = benchCommands();
    const auto found = arguments.isEmpty() ? commands.end() : commands.find(arguments.first());
    if (found == commands.end()) {
        QTextStream err(stderr);
        err << "usage:\n";
        for (const auto &[name, command] : commands)
            err << "  folidoc-bench " << name << ' ' << command.usage << '\n';
        return 2;
    }
    arguments.removeFirst();
    return found->second.run(arguments);
}
