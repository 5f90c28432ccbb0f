#pragma once

#include "host/input/telegram.h"

#include <QJsonObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace host {

/// Decodes telegrams by running wmbusmeters, one short run for each, so that it is never in doubt
/// which readings belong to which telegram. Blocks while the program runs, at most for the time
/// limit.
class TelegramDecoder {
public:
    enum class Outcome {
        Decoded,
        /// The program failed, gave no readings, or gave those of another meter.
        Nothing,
        /// The program was ended because its time limit had passed.
        TimedOut,
    };

    struct Result {
        Outcome outcome = Outcome::Nothing;
        /// The decoded readings with the keys of Telegram::decoded; empty unless decoded.
        QJsonObject readings;
    };

    /// `program` is the file to run.
    explicit TelegramDecoder(QString program,
                             std::chrono::milliseconds timeLimit = std::chrono::seconds(5));

    /// wmbusmeters from the PATH, if it is installed.
    static std::optional<TelegramDecoder> installed();

    Result decode(const Telegram& telegram) const;

private:
    QString m_program;
    std::chrono::milliseconds m_timeLimit;
};

/// How many telegrams got the decoder's readings and how many kept the shipped ones.
struct DecodingCount {
    int decoded = 0;
    int shipped = 0;
    bool timedOut = false;
};

/// Replaces the shipped readings by the decoder's where it gives any; calls `progress` after each
/// telegram. The first telegram that runs into the time limit ends the use of the decoder: it and
/// the rest keep their shipped readings.
DecodingCount decodeTelegrams(const TelegramDecoder& decoder, std::vector<Telegram>& telegrams,
                              const std::function<void()>& progress);

} // namespace host
