#pragma once

class ConsoleLog;
struct CommandLine;

// The files mode of ondrels-synth: builds one layered surface from image
// files, synthesizes it and writes each output layer to the output
// directory. Checks everything it can before loading, prints a one-line
// reason for every failure and returns an ExitStatus.
int synthesizeFiles(const CommandLine& commandLine, ConsoleLog& console);
