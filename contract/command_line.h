#pragma once

#include "host/session/installation.h"

#include <CLI/CLI.hpp>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <string>

namespace contract {

/// What the program is called with.
struct CommandLine {
    QString pluginFile = host::installedPlugin();
    /// Empty if the environment says where the settings are.
    QString settingsFile;
    /// Regular expression of the rules to try; empty for all.
    QString only;
    /// First of the device numbers that are the program's own.
    int firstDevice = 2'100'000'000;
    std::optional<int> registeredDevice;
    /// How long one rule may take.
    int timeLimitSecs = 30;
    bool deleteRecords = false;
    bool json = false;
    bool list = false;
    bool manual = false;
    bool completion = false;
    bool verbose = false;

    /// Set by the program itself for its child processes: Task's name, and what it is about.
    QString task;
    QStringList items;
};

/// The program's options, which are read into `given`. Parsing throws CLI::ParseError.
std::unique_ptr<CLI::App> makeApp(CommandLine& given);

/// The program's manual page.
std::string manualPage(const CLI::App& app);

} // namespace contract
