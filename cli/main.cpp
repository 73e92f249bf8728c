#include "CommandLine.h"
#include "ConsoleLog.h"
#include "ExitStatus.h"
#include "SynthesizeFiles.h"
#include "SynthesizeProject.h"
#include "ThreadWaits.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    useShortThreadWaits(argv);
    QCoreApplication application(argc, argv);
    ConsoleLog console;

    CommandLine commandLine;
    QString error;
    if (!parseCommandLine(QCoreApplication::arguments().mid(1), commandLine, error)) {
        logUsageError(error);
        return ExitUsage;
    }
    console.setQuiet(commandLine.quiet);

    switch (commandLine.mode) {
    case CommandLine::Mode::Help:
        std::fputs(usageText().toLocal8Bit().constData(), stdout);
        return ExitSuccess;
    case CommandLine::Mode::Files:
        return synthesizeFiles(commandLine, console);
    case CommandLine::Mode::ProjectList:
        return listProject(commandLine);
    case CommandLine::Mode::ProjectSurface:
        return synthesizeProjectSurface(commandLine, console);
    }
    return ExitUsage;
}
