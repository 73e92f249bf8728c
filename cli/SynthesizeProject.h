#pragma once

class ConsoleLog;
struct CommandLine;

// The project modes of ondrels-synth. Both load the project directory (the
// loader's messages go to the log) and return an ExitStatus.

// --project DIR --list: prints the project's records to stdout.
int listProject(const CommandLine& commandLine);

// --project DIR --surface NAME -o DIR: synthesizes the surface or mixed
// surface with its own settings, overridden by the engine options given, and
// writes its output layers like the files mode. With --save-project the
// project is saved afterwards (with its own settings, not the overrides), so
// that the frozen parts of a mixed surface are kept in its cache.
int synthesizeProjectSurface(const CommandLine& commandLine, ConsoleLog& console);
