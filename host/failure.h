#pragma once

#include <QString>

#include <stdexcept>

namespace host {

/// What ends the program with exit status 1: its message names the thing that failed and the cause.
class Failure : public std::runtime_error {
public:
    explicit Failure(const QString& message) : std::runtime_error(message.toStdString()) {}
};

} // namespace host
