#pragma once

#include <QString>

// The whole command line as the program was given it, arguments joined by blanks.
QString CommandLine();
void SetCommandLine(const QString& line);

// The value of a switch such as "-l": the characters right behind it up to the next blank, or
// to the end of the line for "-c" and "-d". The switch is found anywhere, in either case.
QString GetCommandSwitch(const QString& sSwitch);
