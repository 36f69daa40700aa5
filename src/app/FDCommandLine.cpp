#include "FDCommandLine.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include <cstdio>

namespace {

void print(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

// The options that the toolkit takes for itself from the same command line: accepted here and
// left to it.
void addToolkitOptions(QCommandLineParser &parser)
{
    for (const char *name : { "platform", "platformpluginpath", "platformtheme", "plugin",
             "display", "style", "stylesheet", "qwindowgeometry", "qwindowtitle", "qwindowicon",
             "geometry", "session" }) {
        QCommandLineOption option(QString::fromLatin1(name));
        option.setValueName(QStringLiteral("value"));
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    for (const char *name : { "reverse", "nograb", "dograb", "sync" }) {
        QCommandLineOption option(QString::fromLatin1(name));
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
}

} // namespace

QStringList FDCommandLine::argumentsOf(int argc, char *argv[])
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(QFile::decodeName(argv[index]));
    return arguments;
}

FDCommandLine::FDCommandLine(const QStringList &arguments, const QString &workingFolder)
{
    QCommandLineParser parser;
    // "-platform offscreen" is the toolkit's spelling, so single-dash words are whole names.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral("Reads and annotates PDF documents."));
    // The toolkit's help option would add --help-all for options that are not ours to explain.
    const QCommandLineOption help({ QStringLiteral("h"), QStringLiteral("help") },
        QStringLiteral("Displays help on commandline options."));
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption newWindow(QStringLiteral("new-window"),
        QStringLiteral("Opens the files in a new window of the running Folidoc."));
    parser.addOption(newWindow);
    addToolkitOptions(parser);
    parser.addPositionalArgument(QStringLiteral("files"),
        QStringLiteral("PDF files to open, as paths or file:// URLs."),
        QStringLiteral("[files...]"));

    // The usage line names the program as a person types it.
    QStringList named = arguments;
    if (named.isEmpty())
        named.append(QStringLiteral("folidoc"));
    else
        named.first() = QFileInfo(named.first()).fileName();
    if (!parser.parse(named)) {
        m_action = Fail;
        m_text = QStringLiteral("%1: %2\nTry '%1 --help' for more information.\n")
                     .arg(named.first(), parser.errorText());
        return;
    }
    if (parser.isSet(help)) {
        m_action = ShowHelp;
        // Without an application object the toolkit cannot know the program's name.
        m_text = parser.helpText().replace(QLatin1String("<executable_name>"), named.first());
        return;
    }
    if (parser.isSet(version)) {
        m_action = ShowVersion;
        m_text = QStringLiteral("Folidoc %1\n").arg(QStringLiteral(FOLIDOC_VERSION));
        return;
    }
    m_newWindow = parser.isSet(newWindow);

    static const QRegularExpression otherScheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]*://"));
    const QDir folder(workingFolder);
    const QStringList positional = parser.positionalArguments();
    for (const QString &argument : positional) {
        if (argument.startsWith(QLatin1String("file:"), Qt::CaseInsensitive)) {
            // What the desktop passes for "%u": percent escapes, maybe a host, maybe a page.
            const QUrl url(argument);
            const QString host = url.host();
            if (!url.isValid() || !url.path().startsWith(QLatin1Char('/'))
                || !(host.isEmpty() || host == QLatin1String("localhost"))) {
                m_problems.append(QStringLiteral("%1: Not a file on this computer").arg(argument));
                continue;
            }
            m_paths.append(QDir::cleanPath(url.path(QUrl::FullyDecoded)));
        } else if (otherScheme.match(argument).hasMatch()) {
            m_problems.append(QStringLiteral("%1: Only local files can be opened").arg(argument));
        } else {
            m_paths.append(QDir::cleanPath(folder.absoluteFilePath(argument)));
        }
    }
}

void FDCommandLine::complain(const QString &line)
{
    print(stderr, QStringLiteral("folidoc: %1\n").arg(line));
}

int FDCommandLine::finish() const
{
    switch (m_action) {
    case ShowHelp:
    case ShowVersion:
        print(stdout, m_text);
        return 0;
    case Fail:
        print(stderr, m_text);
        return 2;
    case Run:
        break;
    }
    return 0;
}
