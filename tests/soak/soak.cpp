#include "tests/soak/soak.h"

#include "tests/soak/call_bound.h"
#include "tests/soak/device_kinds.h"
#include "tests/soak/record_kinds.h"
#include "tests/soak/writer.h"

#include <algorithm>
#include <memory>
#include <random>
#include <thread>
#include <utility>

namespace soak {

namespace {

using namespace std::chrono_literals;

constexpr std::array allSides{Side::Redis, Side::Ferretdb, Side::Postgresql};

class Run {
public:
    Run(interfaces::IDatabaseFactory& factory, const SoakOptions& options,
        const std::function<bool()>& isToEnd, const std::function<void(const std::string&)>& say)
        : m_options(options), m_isToEnd(isToEnd), m_say(say), m_random(options.seed),
          m_servers(options.servers) {
        for (const auto& make : {recordKinds, deviceKinds}) {
            for (auto& kind : make(factory, m_servers.settings())) {
                m_writers.push_back(std::make_unique<Writer>(std::move(kind)));
            }
        }
    }

    SoakResult operator()() {
        for (const auto& writer : m_writers) {
            writer->start();
        }
        while (!isOver()) {
            pause(100ms, 600ms);
            killAndStart(nextSides());
            reportProgress();
        }
        for (const auto& writer : m_writers) {
            writer->stop();
        }
        m_say("reading everything back");
        return result();
    }

private:
    bool isOver() const {
        return m_isToEnd() || (m_options.atMost && Clock::now() - m_begin >= *m_options.atMost) ||
               std::ranges::all_of(allSides,
                                   [this](Side side) { return killsOf(side) >= m_options.kills; });
    }

    int killsOf(Side side) const {
        const auto found = m_kills.find(side);
        return found == m_kills.end() ? 0 : found->second;
    }

    std::chrono::milliseconds between(std::chrono::milliseconds least,
                                      std::chrono::milliseconds most) {
        return std::chrono::milliseconds(
            std::uniform_int_distribution<std::int64_t>(least.count(), most.count())(m_random));
    }

    void pause(std::chrono::milliseconds least, std::chrono::milliseconds most) {
        std::this_thread::sleep_for(between(least, most));
    }

    /// One of those that have kills left, or all of these together.
    std::vector<Side> nextSides() {
        std::vector<Side> left;
        std::ranges::copy_if(allSides, std::back_inserter(left),
                             [this](Side side) { return killsOf(side) < m_options.kills; });
        std::ranges::shuffle(left, m_random);
        if (std::uniform_int_distribution(0, 3)(m_random) != 0) {
            left.resize(1);
        }
        return left;
    }

    void killAndStart(std::vector<Side> sides) {
        for (const Side side : sides) {
            m_servers.kill(side);
            ++m_kills[side];
        }
        pause(0ms, 1000ms);
        std::ranges::shuffle(sides, m_random);
        for (const Side side : sides) {
            m_servers.start(side);
        }
        const bool onlyRedis = sides == std::vector{Side::Redis};
        for (const auto& writer : m_writers) {
            if (!onlyRedis || writer->kind().usesRedis()) {
                writer->serversAreBack();
            }
        }
        awaitWriters();
    }

    /// Each of them may have a call under way that takes as long as it may, and then needs another
    /// one.
    void awaitWriters() {
        const auto deadline = Clock::now() + 2 * (boundOf(false) + boundSlack);
        const auto areSettled = [this] {
            return std::ranges::all_of(m_writers,
                                       [](const auto& writer) { return writer->isSettled(); });
        };
        while (!areSettled() && Clock::now() < deadline && !m_isToEnd()) {
            std::this_thread::sleep_for(2ms);
        }
        if (m_isToEnd()) {
            return;
        }
        for (const auto& writer : m_writers) {
            if (const std::string why = writer->giveUp(); !why.empty()) {
                m_say(writer->kind().name().toStdString() + ' ' + why);
            }
        }
    }

    std::string url() const {
        return m_servers.settings().value(QLatin1String("url")).toString().toStdString();
    }

    std::chrono::milliseconds boundOf(bool usesRedis) const { return callBound(url(), usesRedis); }

    void reportProgress() {
        if (Clock::now() - m_lastReport < 15s) {
            return;
        }
        m_lastReport = Clock::now();
        std::string line = "killed";
        for (const Side side : allSides) {
            line += ' ' + std::string(nameOf(side)) + ' ' + std::to_string(killsOf(side));
            if (!m_options.atMost) {
                line += '/' + std::to_string(m_options.kills);
            }
        }
        CallFigures all;
        for (const auto& writer : m_writers) {
            const CallFigures calls = writer->calls();
            all.acknowledged += calls.acknowledged;
            all.thrown += calls.thrown;
        }
        m_say(line + ", " + std::to_string(all.acknowledged) + " calls acknowledged, " +
              std::to_string(all.thrown) + " thrown");
    }

    static Findings readBack(Writer& writer) {
        try {
            return writer.readBack();
        } catch (const std::exception& exception) {
            Findings findings;
            findings.unreadable = 1;
            findings.example(writer.kind().name() + QStringLiteral(" cannot be read back: ") +
                             QString::fromUtf8(exception.what()));
            return findings;
        }
    }

    SoakResult result() {
        SoakResult result;
        result.seed = m_options.seed;
        result.kills = m_kills;
        result.took = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_begin);
        result.url = url();
        for (const auto& writer : m_writers) {
            const bool usesRedis = writer->kind().usesRedis();
            result.kinds.push_back({
                .name = writer->kind().name(),
                .usesRedis = usesRedis,
                .calls = writer->calls(),
                .findings = readBack(*writer),
                .bound = boundOf(usesRedis),
            });
        }
        return result;
    }

    SoakOptions m_options;
    std::function<bool()> m_isToEnd;
    std::function<void(const std::string&)> m_say;
    std::mt19937 m_random;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_lastReport = m_begin;
    std::map<Side, int> m_kills;
    Servers m_servers;
    std::vector<std::unique_ptr<Writer>> m_writers; // end before their servers
};

} // namespace

bool KindResult::keepsItsPromises() const {
    constexpr int callsAllowed = 2;
    const auto& until = calls.callsUntilWorking;
    return findings.unreadable == 0 && findings.lost == 0 && findings.different == 0 &&
           findings.twice == 0 && calls.stayedBroken == 0 &&
           (until.empty() || until.rbegin()->first <= callsAllowed) &&
           calls.longest <= bound + boundSlack;
}

bool SoakResult::keepsItsPromises() const {
    return std::ranges::all_of(kinds, &KindResult::keepsItsPromises);
}

SoakResult runSoak(interfaces::IDatabaseFactory& factory, const SoakOptions& options,
                   const std::function<bool()>& isToEnd,
                   const std::function<void(const std::string&)>& say) {
    return Run(factory, options, isToEnd, say)();
}

} // namespace soak
