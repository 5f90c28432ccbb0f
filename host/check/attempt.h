#pragma once

#include "host/failure.h"

#include <QString>

#include <exception>

namespace host {

/// Runs one step and gives what it gives; whatever the plug-in or a client library throws becomes a
/// Failure that names the step.
template <class Step>
auto attempt(const QString& what, Step step) {
    try {
        return step();
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(what + QStringLiteral(" failed: ") + QString::fromUtf8(error.what()));
    } catch (const QString& error) {
        throw Failure(what + QStringLiteral(" failed: ") + error);
    }
}

} // namespace host
