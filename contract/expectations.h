#pragma once

#include "contract/rule.h"
#include "host/records/record_compare.h"

#include <QDebug>
#include <QString>
#include <QStringList>

#include <concepts>
#include <list>
#include <map>
#include <memory>
#include <type_traits>
#include <variant>

/// What rules say about what they see. Each throws RuleBroken with a text for the one and the other
/// if it is not so.
namespace contract {

/// The exception that is being handled, in words: its type and its text.
QString currentException();

void expect(bool isSo, const QString& expected, const QString& seen);

template <class Value>
QString toText(const Value& value) {
    if constexpr (std::is_enum_v<Value>) {
        return QString::number(static_cast<int>(value));
    } else {
        QString text;
        QDebug(&text).nospace() << value;
        return text;
    }
}

/// As the driver state's values are told apart: by type and by value.
QString toText(const std::variant<int, double, QByteArray>& value);

/// The numbers of records (Kind::numberOf) by device.
using Numbers = std::map<int, std::list<int>>;

QString toText(const Numbers& numbers);

/// `what` is a noun: "the prefix".
template <class Value>
void expectEqual(const QString& what, const Value& seen,
                 const std::type_identity_t<Value>& expected) {
    expect(seen == expected, what + QStringLiteral(" is ") + toText(expected), toText(seen));
}

/// Equal in every member, by the rules of the stores: whole seconds, numbers as doubles, nothing in
/// the members that are the host's own.
template <class Record>
void expectSame(const Record& saved, const Record& seen) {
    const QStringList differences = host::differences(saved, seen);
    expect(differences.isEmpty(), QStringLiteral("every member comes back equal"),
           differences.join(QStringLiteral("; ")));
}

/// The call throws, whatever it is.
template <std::invocable Call>
void expectThrows(const QString& what, Call call) {
    try {
        call();
    } catch (...) {
        return;
    }
    throw RuleBroken{what + QStringLiteral(" throws"), QStringLiteral("it returned")};
}

/// The call throws this QString.
template <std::invocable Call>
void expectThrowsText(const QString& what, const QString& text, Call call) {
    const QString expected = what + QStringLiteral(" throws the QString ") + toText(text);
    try {
        call();
    } catch (const QString& thrown) {
        expect(thrown == text, expected, QStringLiteral("the QString ") + toText(thrown));
        return;
    } catch (...) {
        throw RuleBroken{expected, currentException()};
    }
    throw RuleBroken{expected, QStringLiteral("it returned")};
}

/// The object behind the pointer, which is never null.
template <class Pointer>
auto& expectObject(const QString& what, const Pointer& pointer) {
    if (pointer == nullptr) {
        throw RuleBroken{what + QStringLiteral(" is an object"), QStringLiteral("a null pointer")};
    }
    return *pointer;
}

/// The records that a query found, by device.
template <class Record>
using Answer = std::shared_ptr<std::map<int, std::list<Record>>>;

/// The numbers of what was found, in the order in which it was found.
template <class Kind>
Numbers numbersOf(const Answer<typename Kind::Record>& answer) {
    Numbers numbers;
    for (const auto& [device, records] : expectObject(QStringLiteral("an answer"), answer)) {
        auto& list = numbers[device];
        for (const auto& record : records) {
            list.push_back(Kind::numberOf(record));
        }
    }
    return numbers;
}

/// Exactly these records, in this order within each device.
template <class Kind>
void expectInOrder(const Answer<typename Kind::Record>& answer, const Numbers& expected) {
    expectEqual(QStringLiteral("the answer"), numbersOf<Kind>(answer), expected);
}

/// Exactly these records, in any order.
template <class Kind>
void expectFound(const Answer<typename Kind::Record>& answer, Numbers expected) {
    Numbers seen = numbersOf<Kind>(answer);
    for (Numbers* numbers : {&seen, &expected}) {
        for (auto& [device, list] : *numbers) {
            list.sort();
        }
    }
    expectEqual(QStringLiteral("the answer"), seen, expected);
}

/// The only record of the answer.
template <class Record>
Record expectOne(const Answer<Record>& answer) {
    expectObject(QStringLiteral("an answer"), answer);
    const auto& found = *answer;
    const auto count = found.empty() ? 0 : found.begin()->second.size();
    expect(found.size() == 1 && count == 1, QStringLiteral("one record of one device"),
           QStringLiteral("%1 records of %2 devices").arg(count).arg(found.size()));
    return found.begin()->second.front();
}

} // namespace contract
