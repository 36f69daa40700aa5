#pragma once

// The program's command line: the options, and the files named by path or by file URL. Read
// before any application object exists, so that --help and --version need no display.

#include <QString>
#include <QStringList>

class FDCommandLine
{
public:
    enum Action { Run, ShowHelp, ShowVersion, Fail };

    // arguments: the whole command line, the program first. Relative paths are taken from
    // workingFolder.
    FDCommandLine(const QStringList &arguments, const QString &workingFolder);
    // The arguments of main, decoded as the system encodes file names.
    static QStringList argumentsOf(int argc, char *argv[]);

    Action action() const { return m_action; }
    // Absolute paths of the files to open, in the order given.
    QStringList paths() const { return m_paths; }
    bool newWindow() const { return m_newWindow; }
    // One line per argument that names nothing that can be opened, such as a web address.
    QStringList problems() const { return m_problems; }

    // "folidoc: " and line on standard error: what a terminal shows about one argument.
    static void complain(const QString &line);

    // Prints the help, the version or the error; answers the exit status. Only for an action
    // other than Run.
    int finish() const;

private:
    Action m_action = Run;
    QStringList m_paths;
    bool m_newWindow = false;
    QStringList m_problems;
    QString m_text;
};
