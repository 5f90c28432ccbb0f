#include "tests/support/mongo_commands.h"

#include <bson/bson.h>
#include <mongocxx/v1/apm.hpp>
#include <mongocxx/v1/events/command_started.hpp>
#include <mongocxx/v1/uri.hpp>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace test_support {

namespace {

mongocxx::v1::client recordingInto(std::vector<sent_command>& sent, const std::string& url) {
    mongocxx::v1::apm events;
    events.on_command_started([&sent](const mongocxx::v1::events::command_started& event) {
        const auto name = static_cast<std::string>(event.command_name());
        if (name != "endSessions") {
            sent.push_back({name, bsoncxx::v1::document::value{event.command()}});
        }
    });
    mongocxx::v1::client::options options;
    options.apm_opts(events);
    return mongocxx::v1::client{mongocxx::v1::uri{url}, options};
}

bool isAmong(std::string_view key, std::initializer_list<std::string_view> keys) {
    return std::ranges::find(keys, key) != keys.end();
}

std::string pick(const bsoncxx::v1::document::view& document,
                 const std::function<bool(std::string_view)>& wanted) {
    bson_t whole;
    bson_init_static(&whole, document.data(), document.size());
    bson_t picked = BSON_INITIALIZER;
    bson_iter_t iterator;
    bson_iter_init(&iterator, &whole);
    while (bson_iter_next(&iterator)) {
        if (wanted(bson_iter_key(&iterator))) {
            bson_append_iter(&picked, nullptr, 0, &iterator);
        }
    }
    std::string text = toJson(bsoncxx::v1::document::view{bson_get_data(&picked), picked.len});
    bson_destroy(&picked);
    return text;
}

} // namespace

std::string sent_command::part(std::initializer_list<std::string_view> fields) const {
    return pick(body, [&](std::string_view key) { return isAmong(key, fields); });
}

std::string sent_command::asked() const {
    return pick(body, [](std::string_view key) {
        return !isAmong(key, {"lsid", "txnNumber", "$db", "$clusterTime", "$readPreference"});
    });
}

recording_client::recording_client(const std::string& url) : m_client(recordingInto(m_sent, url)) {}

std::vector<std::string> recording_client::sentNames() const {
    std::vector<std::string> names;
    for (const sent_command& command : m_sent) {
        names.push_back(command.name);
    }
    return names;
}

const sent_command& recording_client::onlySent() const {
    if (m_sent.size() != 1) {
        throw std::runtime_error(std::to_string(m_sent.size()) + " requests were sent");
    }
    return m_sent.front();
}

} // namespace test_support
