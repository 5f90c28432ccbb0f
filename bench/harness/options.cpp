#include "bench/harness/options.h"

#include <QJsonDocument>
#include <QSaveFile>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace bench {

void Options::write(const QJsonObject& results) const {
    if (resultsFile.isEmpty()) {
        return;
    }
    QSaveFile file(resultsFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument{results}.toJson()) < 0 ||
        !file.commit()) {
        throw std::runtime_error("cannot write " + resultsFile.toStdString() + ": " +
                                 file.errorString().toStdString());
    }
}

Options takeOptions(int& argc, char** argv) {
    Options options;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--quick") {
            options.quick = true;
        } else if (argument == "--results" && i + 1 < argc) {
            options.resultsFile = QString::fromLocal8Bit(argv[++i]);
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    argv[argc] = nullptr;
    return options;
}

int runProgram(const char* name, const std::function<int()>& program) try {
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return program();
} catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return 1;
}

} // namespace bench
