#include <QCoreApplication>
#include <QTextStream>

// folidoc-bench SUBCOMMAND ARGS: one "name: value" line per figure.
int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream err(stderr);
    err << "usage: folidoc-bench engine FILE.pdf | view FILE.pdf | roundtrip IN.pdf OUT.pdf\n";
    return 2;
}
