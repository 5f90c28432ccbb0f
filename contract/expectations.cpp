#include "contract/expectations.h"

#include <cxxabi.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <typeinfo>

namespace contract {

namespace {

QString demangled(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name{
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free};
    return QString::fromUtf8(name ? name.get() : type.name());
}

} // namespace

QString currentException() {
    const auto* const type = abi::__cxa_current_exception_type();
    const QString name = type != nullptr ? demangled(*type) : QStringLiteral("an exception");
    try {
        throw;
    } catch (const std::exception& error) {
        return QStringLiteral("it threw %1: %2").arg(name, QString::fromUtf8(error.what()));
    } catch (const QString& text) {
        return QStringLiteral("it threw %1: %2").arg(name, text);
    } catch (...) {
        return QStringLiteral("it threw ") + name;
    }
}

void expect(bool isSo, const QString& expected, const QString& seen) {
    if (!isSo) {
        throw RuleBroken{expected, seen};
    }
}

QString toText(const std::variant<int, double, QByteArray>& value) {
    constexpr std::array types{"the int ", "the double ", "the bytes "};
    return QLatin1String(types.at(value.index())) +
           std::visit([](const auto& alternative) { return toText(alternative); }, value);
}

QString toText(const Numbers& numbers) {
    QStringList devices;
    for (const auto& [device, list] : numbers) {
        QStringList texts;
        for (const int number : list) {
            texts.append(QString::number(number));
        }
        devices.append(QStringLiteral("records %1 of device %2")
                           .arg(texts.join(QLatin1Char(' ')), QString::number(device)));
    }
    return devices.isEmpty() ? QStringLiteral("no records") : devices.join(QStringLiteral(", "));
}

} // namespace contract
