#include "host/query/value_query.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/query/answer.h"
#include "host/query/latest_values.h"
#include "interfaces/ieav_repository.h"

namespace host {

namespace {

model::filter_eav filterOf(const ValueQuery& query) {
    auto filter = filterFor<model::filter_eav>(query);
    filter.obis_codes = eachOnce(query.obisCodes);
    filter.tags = query.tags;
    return filter;
}

std::map<int, std::list<model::dev_value>> read(const model::filter_eav& filter, Session& session) {
    auto& repository = *session.values().EAVRepository();
    return std::move(
        *attempt(QStringLiteral("reading the values at ") + serverName(session.settings()),
                 [&] { return repository.GetValues(filter); }));
}

/// Of one device and one code; a query for numbers alone would miss the texts.
void addLatestOf(model::filter_eav filter, std::vector<model::dev_value>& latest,
                 Session& session) {
    filter.limit = 1;
    for (const auto& code : std::exchange(filter.obis_codes, {})) {
        filter.obis_codes = {code};
        for (const auto& [device, values] : read(filter, session)) {
            std::ranges::copy(values, std::back_inserter(latest));
        }
    }
}

/// Of one device, whose codes no query tells: they are seen from its newest values.
void addLatestOfAll(model::filter_eav filter, int depth, std::vector<model::dev_value>& latest,
                    Session& session) {
    filter.limit = limitToAsk(depth);
    for (auto& [device, values] : read(filter, session)) {
        if (depth != 0 && values.size() > static_cast<std::size_t>(depth)) {
            session.remarks().line(
                QStringLiteral("Device %1 has more than %2 values: a code that none of its newest "
                               "%2 is of is not shown. --obis asks for a code, --depth says how "
                               "many values are looked through.")
                    .arg(device)
                    .arg(depth));
            values.pop_back();
        }
        std::ranges::copy(latestOfEachCode(values), std::back_inserter(latest));
    }
}

} // namespace

void showValues(const ValueQuery& query, Session& session) {
    showAnswer(newestFirst(read(filterOf(query), session), query.limit), QStringLiteral("values"),
               session);
}

void showFirstAndLast(const ValueQuery& query, Session& session) {
    auto filter = filterOf(query);
    filter.first_last = true;
    Answer<model::dev_value> answer;
    for (const auto& [device, values] : read(filter, session)) {
        std::ranges::copy(values, std::back_inserter(answer.records));
    }
    showAnswer(answer, QStringLiteral("numeric values"), session);
}

void showLatest(const ValueQuery& query, Session& session) {
    Answer<model::dev_value> answer;
    auto filter = filterOf(query);
    for (const int device : std::exchange(filter.modem_ids, {})) {
        filter.modem_ids = {device};
        if (filter.obis_codes.empty()) {
            addLatestOfAll(filter, query.depth, answer.records, session);
        } else {
            addLatestOf(filter, answer.records, session);
        }
    }
    showAnswer(answer, QStringLiteral("values"), session);
}

} // namespace host
