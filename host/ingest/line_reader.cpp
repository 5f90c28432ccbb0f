#include "host/ingest/line_reader.h"

#include "host/failure.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace host {

namespace {

constexpr int blockBytes = 64 * 1024;
/// A file at its end is asked so often for more.
constexpr std::chrono::milliseconds restMsecs{200};

Failure unreadable(const QString& name) {
    return Failure(QStringLiteral("cannot read %1: %2").arg(name, qt_error_string(errno)));
}

struct stat statusOf(int descriptor) {
    struct stat status{};
    fstat(descriptor, &status);
    return status;
}

/// Returns early for a signal.
void rest(std::chrono::milliseconds time) {
    poll(nullptr, 0, static_cast<int>(time.count()));
}

} // namespace

LineReader::LineReader(QString file, bool follow)
    : m_file(std::move(file)),
      m_name(m_file == QLatin1String("-") ? QStringLiteral("the standard input") : m_file),
      m_follow(follow) {
    open();
}

LineReader::~LineReader() {
    close();
}

void LineReader::open() {
    m_descriptor = m_file == QLatin1String("-")
                       ? STDIN_FILENO
                       : ::open(QFile::encodeName(m_file).constData(), O_RDONLY | O_CLOEXEC);
    if (m_descriptor < 0) {
        throw unreadable(m_name);
    }
    m_regular = S_ISREG(statusOf(m_descriptor).st_mode);
}

void LineReader::close() const {
    if (m_descriptor != STDIN_FILENO) {
        ::close(m_descriptor);
    }
}

std::optional<qint64> LineReader::size() const {
    return m_regular ? std::optional<qint64>(statusOf(m_descriptor).st_size) : std::nullopt;
}

LineReader::Next LineReader::next(Line& line, std::chrono::milliseconds patience) {
    while (!takeLine(line)) {
        if (!hasInput(patience)) {
            return Next::Nothing;
        }
        if (fill()) {
            continue;
        }
        if (m_follow && m_regular) {
            if (!beginAnew()) {
                rest(std::min(patience, restMsecs));
                return Next::Nothing;
            }
        } else {
            return takeLastLine(line) ? Next::Line : Next::End;
        }
    }
    return Next::Line;
}

bool LineReader::hasInput(std::chrono::milliseconds patience) const {
    pollfd waiting{.fd = m_descriptor, .events = POLLIN, .revents = 0};
    return poll(&waiting, 1, static_cast<int>(patience.count())) > 0;
}

bool LineReader::fill() {
    m_buffer.remove(0, m_begin);
    m_searched -= std::exchange(m_begin, 0);
    const int before = m_buffer.size();
    m_buffer.resize(before + blockBytes);
    const auto count = ::read(m_descriptor, m_buffer.data() + before, blockBytes);
    m_buffer.resize(before + static_cast<int>(std::max<ssize_t>(count, 0)));
    if (count < 0 && errno != EINTR && errno != EAGAIN) {
        throw unreadable(m_name);
    }
    m_position += std::max<ssize_t>(count, 0);
    return count != 0;
}

bool LineReader::takeLine(Line& line) {
    const int end = m_buffer.indexOf('\n', m_searched);
    if (end < 0) {
        if (m_buffer.size() - m_begin > maxBytes) {
            // What follows belongs to the same line, but is not kept.
            m_bytesRead += m_buffer.size() - m_begin - maxBytes;
            m_buffer.truncate(m_begin + maxBytes);
            m_cutting = true;
        }
        m_searched = m_buffer.size();
        return false;
    }
    const int bytes = end - m_begin;
    line = {.text = m_buffer.mid(m_begin, std::min(bytes, maxBytes)),
            .number = ++m_lineNumber,
            .cut = std::exchange(m_cutting, false) || bytes > maxBytes};
    m_begin = end + 1;
    m_searched = m_begin;
    m_bytesRead += bytes + 1;
    return true;
}

bool LineReader::takeLastLine(Line& line) {
    if (m_buffer.size() == m_begin) {
        return false;
    }
    m_buffer.append('\n');
    return takeLine(line);
}

void LineReader::forget() {
    m_buffer.clear();
    m_begin = 0;
    m_searched = 0;
    m_cutting = false;
    m_lineNumber = 0;
    m_bytesRead = 0;
    m_position = 0;
}

bool LineReader::beginAnew() {
    struct stat named{};
    if (m_file != QLatin1String("-") &&
        ::stat(QFile::encodeName(m_file).constData(), &named) == 0) {
        const auto opened = statusOf(m_descriptor);
        if (named.st_ino != opened.st_ino || named.st_dev != opened.st_dev) {
            close();
            open();
            forget();
            return true;
        }
    }
    if (statusOf(m_descriptor).st_size < m_position) {
        ::lseek(m_descriptor, 0, SEEK_SET);
        forget();
        return true;
    }
    return false;
}

} // namespace host
