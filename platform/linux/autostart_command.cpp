// SPDX-License-Identifier: MIT
#include "platform/linux/autostart_command.h"

#include "platform/linux/program_lookup.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace orvanta {
namespace {

constexpr char kBetweenWordsOfAShell[] = " \t\n;&|()'\"";

bool isSameFile(const QByteArray& one, const QByteArray& other) {
    struct stat first = {};
    struct stat second = {};
    return ::stat(one.constData(), &first) == 0 && ::stat(other.constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

QByteArrayList wordsOf(QByteArray argument) {
    const auto separates = [](char character) {
        return std::strchr(kBetweenWordsOfAShell, character) != nullptr;
    };
    std::replace_if(argument.begin(), argument.end(), separates, '\n');
    return argument.split('\n');
}

} // namespace

bool runsProgram(const QByteArrayList& command, const QByteArray& program,
                 const EnvironmentVariables& variables) {
    const auto isProgram = [&](const QByteArray& name) {
        const auto found = findProgram(variables, name);
        return found && isSameFile(*found, program);
    };
    const auto namesProgram = [&](const QByteArray& argument) {
        const QByteArrayList words = wordsOf(argument);
        return isProgram(argument) || std::any_of(words.begin(), words.end(), isProgram);
    };
    return !command.isEmpty() && findProgram(variables, command.first()) &&
           std::any_of(command.begin(), command.end(), namesProgram);
}

} // namespace orvanta
