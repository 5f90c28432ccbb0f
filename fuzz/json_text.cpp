// Texts that are taken for JSON, as what stands in Redis.

#include "fuzz/support/json_of_choices.h"
#include "fuzz/support/json_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::json_names names{"$date", "$oid", "$numberLong", "state", "value", "0"};
    fuzz::choices choices{fuzz::textOf(data, size)};
    const std::string text = fuzz::anyText(choices, names);
    const QJsonObject object = fuzz::parsed(text);
    fuzz::writeEachWay(object);

    // What is kept comes back, but for byte order marks and lone surrogates.
    const QByteArray kept = model_convertors::compactJson(object);
    const QJsonObject again = QJsonDocument::fromJson(kept).object();
    fuzz::writeEachWay(again);
    if (text.find("\xEF\xBB\xBF") == std::string::npos && text.find('\\') == std::string::npos) {
        fuzz::require(model_convertors::compactJson(again) == kept, "the text comes back", text);
    }
    return 0;
}
