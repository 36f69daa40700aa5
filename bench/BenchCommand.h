#pragma once

// Subcommands of folidoc-bench register themselves here; main() dispatches by name.

#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <vector>

using BenchFunction = std::function<int(const QStringList &arguments)>;

struct BenchCommand
{
    QString usage;
    BenchFunction run;
};

std::map<QString, BenchCommand> &benchCommands();

// A static BenchRegistration in a subcommand's source file adds it to the table.
struct BenchRegistration
{
    BenchRegistration(const QString &name, const QString &usage, BenchFunction run)
    {
        benchCommands()[name] = BenchCommand { usage, std::move(run) };
    }
};

// Prints one "name: value" line to standard output, the format compared across versions.
void benchPrint(const QString &name, double value);

// A figure of /proc/self/status in megabytes ("VmRSS:" now, "VmHWM:" the peak); 0 if unread.
double processMegabytes(const char *field);

// The middle value (the mean of the two middle ones for an even count); 0 for none.
double median(std::vector<double> values);
