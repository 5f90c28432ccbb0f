#include "host/ingest/ingest.h"

#include "host/console.h"
#include "host/ingest/ingest_progress.h"
#include "host/ingest/line_reader.h"
#include "host/ingest/patience.h"
#include "host/ingest/reading_blocks.h"
#include "host/ingest/reading_writer.h"
#include "host/ingest/rejects.h"
#include "host/ingest/uplink_writer.h"
#include "host/input/settings.h"
#include "host/input/wmbusmeters_output.h"
#include "host/records/filters.h"
#include "host/session/interrupt.h"

#include <QElapsedTimer>

#include <csignal>
#include <limits>
#include <utility>

namespace host {

namespace {

/// A batch is stored when its lines take so many bytes, however few they are.
constexpr qint64 batchBytes = qint64{4} * 1024 * 1024;
/// The value store gives back no later time.
constexpr qint64 lastSecs = std::numeric_limits<qint32>::max();

void requireStorable(qint64 timeSecs) {
    if (timeSecs > lastSecs) {
        throw Rejection{QStringLiteral("the time is after 2038-01-19T03:14:07Z")};
    }
}

class Ingest {
public:
    Ingest(const IngestOptions& options, Session& session)
        : m_options(options), m_session(session),
          m_rejects(options.rejectsFile, m_account, session.remarks()),
          m_messages(*session.messages().UlMessageRepository()),
          m_records(*session.values().EAVRepository()),
          m_patience(
              serverName(session.settings()), [this] { askServer(); }, session.remarks()),
          m_uplinkWriter({m_messages, m_records, m_patience, m_account, m_rejects}),
          m_readingWriter({m_records, m_patience, m_account, m_rejects}),
          m_blocks(options.device, [this](const ReadingBlocks::Reading& reading,
                                          std::optional<int> device) { take(reading, device); }),
          m_progress(session.remarks()) {}

    ExitStatus run() {
        bool ended = false;
        try {
            ended = readAll();
        } catch (const GivenUp&) {
            m_account.unfinished = m_batchLines;
            m_session.remarks().line(QStringLiteral("ended while the server was away"));
        } catch (const Failure&) {
            m_account.unfinished = m_batchLines;
            showAccount();
            throw;
        }
        showAccount();
        const bool complete = ended && m_account.rejected == 0 && m_account.unfinished == 0;
        return complete ? ExitStatus::Done : ExitStatus::Failed;
    }

private:
    /// True if all was read that was to be read.
    bool readAll() {
        for (const auto& file : m_options.files) {
            read(QString::fromStdString(file));
        }
        m_blocks.close();
        flush();
        return m_options.follow || !Interrupt::requested();
    }

    void read(const QString& file) {
        LineReader reader(file, m_options.follow);
        m_blocks.beginInput();
        m_loggedTelegram.clear();
        LineReader::Line line;
        while (!Interrupt::requested()) {
            switch (reader.next(line, patience())) {
            case LineReader::Next::Line:
                take({reader.name(), line.number, line.text}, line.cut);
                break;
            case LineReader::Next::Nothing:
                break;
            case LineReader::Next::End:
                return;
            }
            flushIfDue();
            m_progress.show(m_account.lines, reader.bytesRead(), reader.size());
        }
    }

    /// Until the batch has to be stored, but not for ever: progress is shown in between.
    std::chrono::milliseconds patience() const {
        return std::chrono::milliseconds(m_batchLines == 0 ? 1000 : 100);
    }

    void take(const Source& source, bool cut) {
        if (source.line.trimmed().isEmpty()) {
            return;
        }
        if (const auto logged = parseLoggedTelegram(source.line)) {
            m_loggedTelegram = *logged;
            return;
        }
        ++m_account.lines;
        try {
            if (cut) {
                throw Rejection{
                    QStringLiteral("the line is longer than %1 bytes").arg(LineReader::maxBytes)};
            }
            takeObject(parseObject(source.line), source);
        } catch (const Rejection& rejection) {
            m_rejects.add(source, rejection.reason);
        }
    }

    void takeObject(const QJsonObject& fields, const Source& source) {
        if (!isWmbusmeters(fields)) {
            m_loggedTelegram.clear();
        }
        if (fields.contains(QLatin1String("obis"))) {
            auto reading = parseMeterReading(fields, source.lineNumber);
            requireStorable(reading.timeSecs);
            m_blocks.add({std::move(reading), source});
        } else if (fields.contains(QLatin1String("telegram"))) {
            takeTelegram(parseTelegram(fields, source.lineNumber), source);
        } else if (isWmbusmeters(fields)) {
            auto telegram = parseWmbusmeters(fields, source.lineNumber);
            telegram.payload = m_loggedTelegram;
            takeTelegram(telegram, source);
        } else {
            throw Rejection{QStringLiteral(
                "neither a telegram, nor a reading, nor what wmbusmeters prints of one")};
        }
        note(source);
    }

    void takeTelegram(const Telegram& telegram, const Source& source) {
        requireStorable(telegram.timeSecs.value_or(0));
        const auto now = QDateTime::currentDateTimeUtc();
        m_uplinks.push_back(buildUplink(telegram, now, now.addSecs(m_options.keepSecs)));
        m_uplinks.back().source = source;
    }

    void take(const ReadingBlocks::Reading& reading, std::optional<int> device) {
        if (!device) {
            m_rejects.add(reading.source,
                          QStringLiteral("it does not say which device it is of: neither a reading "
                                         "0-0:96.1.1 of the same second, nor --device"));
            return;
        }
        model::dev_value value;
        value.modem_id = *device;
        value.timestamp = QDateTime::fromSecsSinceEpoch(reading.reading.timeSecs, Qt::UTC);
        value.obis_code = reading.reading.obisCode;
        value.tag = QStringLiteral("reading");
        value.extended_data =
            QJsonDocument(QJsonObject{{QStringLiteral("unit"), reading.reading.unit}});
        value.value = reading.reading.value;
        value.ttl = QDateTime::currentDateTimeUtc().addSecs(m_options.keepSecs);
        m_readings.push_back({value, reading.source});
    }

    void note(const Source& source) {
        if (m_batchLines == 0) {
            m_batchAge.start();
        }
        ++m_batchLines;
        m_batchBytes += source.line.size();
    }

    void flushIfDue() {
        if (m_batchLines == 0) {
            return;
        }
        const bool late = m_batchAge.hasExpired(m_options.flushAfterSecs * 1000);
        if (late) {
            m_blocks.close();
        }
        if (late || m_batchLines >= m_options.batchLines || m_batchBytes >= batchBytes) {
            flush();
        }
    }

    void flush() {
        m_uplinkWriter.write(m_uplinks);
        m_readingWriter.write(m_readings);
        m_uplinks.clear();
        m_readings.clear();
        // Readings whose block is not over wait for it.
        m_batchLines = static_cast<int>(m_blocks.open());
        m_batchBytes = 0;
        m_batchAge.start();
    }

    void askServer() {
        auto filter = anyTime<model::filter_roll>({0});
        filter.by_time_detected = false;
        filter.limit = 1;
        m_messages.GetMessages(filter);
        // Each store has a connection of its own.
        auto recordFilter = anyTime<model::filter_eav>({0});
        recordFilter.limit = 1;
        m_records.GetEvents(recordFilter);
    }

    void showAccount() {
        m_progress.finish(m_account.lines);
        auto output = m_session.output({
            {QStringLiteral("lines"), QStringLiteral("Lines"), true},
            {QStringLiteral("uplinks"), QStringLiteral("Uplinks"), true},
            {QStringLiteral("uplinks_there"), QStringLiteral("there"), true},
            {QStringLiteral("values"), QStringLiteral("Values"), true},
            {QStringLiteral("values_there"), QStringLiteral("there"), true},
            {QStringLiteral("events"), QStringLiteral("Events"), true},
            {QStringLiteral("events_there"), QStringLiteral("there"), true},
            {QStringLiteral("rejected"), QStringLiteral("Rejected"), true},
            {QStringLiteral("unfinished"), QStringLiteral("Unfinished"), true},
        });
        output.add({m_account.lines, m_account.uplinks, m_account.uplinksThere, m_account.values,
                    m_account.valuesThere, m_account.events, m_account.eventsThere,
                    m_account.rejected, m_account.unfinished});
        output.finish();
    }

    const IngestOptions& m_options;
    Session& m_session;
    IngestAccount m_account;
    Rejects m_rejects;
    interfaces::IULAPPMessageRepository& m_messages;
    interfaces::IEAVRepository& m_records;
    Patience m_patience;
    UplinkWriter m_uplinkWriter;
    ReadingWriter m_readingWriter;
    ReadingBlocks m_blocks;
    IngestProgress m_progress;
    /// What wmbusmeters has printed of the telegram that its next lines are about.
    QByteArray m_loggedTelegram;
    std::vector<Uplink> m_uplinks;
    std::vector<DeviceReading> m_readings;
    int m_batchLines = 0;
    qint64 m_batchBytes = 0;
    QElapsedTimer m_batchAge;
};

} // namespace

ExitStatus runIngest(const IngestOptions& options, Session& session) {
    const Interrupt interrupt;
    // Nobody has to look at what is said of the work for it to be done.
    std::signal(SIGPIPE, SIG_IGN); // NOLINT(cert-err33-c)
    return Ingest(options, session).run();
}

} // namespace host
