#include "host/plot/plot_command.h"

#include "host/check/attempt.h"
#include "host/input/meter_reading.h"
#include "host/input/settings.h"
#include "host/plot/value_plot.h"
#include "host/records/filters.h"
#include "interfaces/ieav_repository.h"

namespace host {

namespace {

int deviceOf(const PlotOptions& options, Console& console) {
    return options.device
               ? *options.device
               : deviceNumber(openRecords(options.readingsFile, readMeterReadings, console));
}

std::list<model::dev_value> valuesOf(const PlotOptions& options, Session& session, int device) {
    auto filter = anyTime<model::filter_eav>({device});
    filter.obis_codes = {options.obisCode};
    auto& repository = *session.values().EAVRepository();
    auto returned =
        attempt(QStringLiteral("reading the values at ") + serverName(session.settings()),
                [&] { return repository.GetValues(filter); });
    return (*returned)[device];
}

QString valueLabel(const model::dev_value& value) {
    const auto unit = value.extended_data.object().value(QLatin1String("unit")).toString();
    return unit.isEmpty() ? value.obis_code : QStringLiteral("%1 (%2)").arg(value.obis_code, unit);
}

} // namespace

void runPlot(const PlotOptions& options, Session& session) {
    auto& console = session.results();
    const int device = deviceOf(options, console);
    const auto what = QStringLiteral("%1 of device %2").arg(options.obisCode).arg(device);
    const auto values = valuesOf(options, session, device);
    if (values.empty()) {
        throw Failure(QStringLiteral("the store has no values of %1; the demo stores some for 12 "
                                     "hours")
                          .arg(what));
    }
    plotValues(values, {what, valueLabel(values.front()), options.fileBase});
    console.line(QStringLiteral("%1 values of %2 drawn into %3.svg and %3.png")
                     .arg(values.size())
                     .arg(what, options.fileBase));
}

} // namespace host
