#pragma once

#include "bench/baselines/raw_collection.h"
#include "model/dl_message.h"
#include "model/filter_dl.h"
#include "model/filter_eav.h"
#include "model/filter_roll.h"

/// The plug-in's queries as the bare client library sends them: for filters without texts.
namespace bench {

/// Period and devices.
bsoncxx::v1::document::value conditionsOf(const model::filter_roll& filter);
bsoncxx::v1::document::value conditionsOf(const model::filter_eav& filter);

/// All records of the period and the devices.
ReadyQuery newestOf(const model::filter_roll& filter);
ReadyQuery newestOf(const model::filter_eav& filter);

/// The newest and the oldest numeric reading of each device and OBIS code: two for each pair.
std::vector<ReadyQuery> firstAndLastOf(const model::filter_eav& filter);

enum class Commands { all, notAcknowledged };

/// For each device.
Documents conditionsOf(const model::filter_dl& filter, Commands which);
std::vector<ReadyQuery> newestOf(const model::filter_dl& filter, Commands which);

/// What an update of a command's status sends.
bsoncxx::v1::document::value settingStatus(model::dl_message::dl_status status);

/// Of commands, each by its id.
Documents conditionsOf(const std::vector<QString>& ids);

} // namespace bench
