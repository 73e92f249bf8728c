#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QStringList>

struct RunResult
{
    int exitCode = -1;
    QStringList errorLines; // stderr, one entry per line
    QString output;         // stdout
};

// Runs the built ondrels-synth, in `workDir` when given: a masked run leaves
// its diagnostic mask image in the working directory.
inline RunResult runSynth(const QStringList& arguments, const QString& workDir = QString())
{
    QProcess process;
    if (!workDir.isEmpty())
        process.setWorkingDirectory(workDir);
    process.start(QStringLiteral(ONDRELS_SYNTH_PATH), arguments);
    RunResult result;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        ADD_FAILURE() << "ondrels-synth did not finish normally";
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitCode();
    result.errorLines = QString::fromLocal8Bit(process.readAllStandardError()).split('\n', Qt::SkipEmptyParts);
    result.output = QString::fromLocal8Bit(process.readAllStandardOutput());
    return result;
}
