#include "host/plot_command.h"

#include "host/attempt.h"
#include "host/demo_mark.h"
#include "host/input_files.h"
#include "host/plugin_file.h"
#include "host/settings_file.h"
#include "host/value_plot.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"

#include <QJsonObject>

namespace host {

namespace {

QString valueLabel(const model::dev_value& value) {
    const auto unit = value.extended_data.object().value(QLatin1String("unit")).toString();
    return unit.isEmpty() ? value.obis_code : QStringLiteral("%1 (%2)").arg(value.obis_code, unit);
}

} // namespace

void runPlot(const PlotOptions& options, Console& console) {
    const auto settings = readSettings(options.settingsFile);
    model::filter_eav filter;
    filter.modem_ids = {
        options.device ? *options.device
                       : deviceNumber(openMeterReadings(options.readingsFile, console).records)};
    filter.obis_codes = {options.obisCode};
    filter.begin = beginOfTime();
    filter.end = endOfTime();
    const int device = filter.modem_ids.front();

    PluginFile plugin(options.pluginFile);
    const auto returned =
        attempt(QStringLiteral("reading the values at ") + serverName(settings), [&] {
            const auto store = plugin.factory().CreateEavDatabaseInst(settings, nullptr);
            return store->EAVRepository()->GetValues(filter);
        });
    const auto ofDevice = returned->find(device);
    if (ofDevice == returned->end()) {
        throw Failure(QStringLiteral("the store has no values of %1 of device %2; the demo stores "
                                     "some for 12 hours")
                          .arg(options.obisCode)
                          .arg(device));
    }
    const auto& values = ofDevice->second;
    plotValues(values, {QStringLiteral("%1 of device %2").arg(options.obisCode).arg(device),
                        valueLabel(values.front()), options.fileBase});
    console.line(QStringLiteral("%1 values of %2 of device %3 drawn into %4.svg and %4.png")
                     .arg(values.size())
                     .arg(options.obisCode)
                     .arg(device)
                     .arg(options.fileBase));
}

} // namespace host
