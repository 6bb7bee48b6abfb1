// Runs a program to its end.
#pragma once

#include <string>

#include <QString>
#include <QStringList>

struct ProgramResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

[[nodiscard]] ProgramResult runProgram(const QString& program, const QStringList& arguments);
