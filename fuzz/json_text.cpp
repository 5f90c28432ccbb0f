// Texts that are taken for JSON, as what stands in Redis.

#include "fuzz/support/json_of_choices.h"
#include "fuzz/support/json_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::json_names names{"$date", "$oid", "$numberLong", "state", "value", "0"};
    fuzz::choices choices{fuzz::textOf(data, size)};
    const std::string text = fuzz::anyText(choices, names);
    const QJsonObject object = fuzz::parsed(text);
    fuzz::writeEachWay(object);

    const QByteArray kept = model_convertors::compactJson(object);
    const QJsonObject again = QJsonDocument::fromJson(kept).object();
    fuzz::writeEachWay(again);
    // Not where Qt's parser goes its own way: it takes a byte order mark from the start of each
    // text, and orders keys with zeros or halves of surrogate pairs in them otherwise each time.
    constexpr auto mark = "\xEF\xBB\xBF";
    const bool isPlain = text.find(mark) == std::string::npos && !kept.contains(mark) &&
                         text.find("\\u") == std::string::npos &&
                         text.find('\0') == std::string::npos;
    fuzz::require(!isPlain || model_convertors::compactJson(again) == kept, "the text comes back",
                  text);
    return 0;
}
