#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QUrl>

namespace test_support {

/// The forms in which a secret may show: as it is, percent-encoded, and within anything that is
/// encoded as base64, wherever it begins there.
inline QByteArrayList formsOf(const QByteArray& secret) {
    QByteArrayList forms{secret, QUrl::toPercentEncoding(QString::fromUtf8(secret))};
    constexpr int group = 4; // characters, for three bytes
    for (int before = 0; before < 3; ++before) {
        // The first and the last group may have other bytes in them too.
        const QByteArray shifted = QByteArray(before, ' ') + secret;
        forms.append(shifted.toBase64().mid(before == 0 ? 0 : group).chopped(group));
    }
    return forms;
}

/// The first of the forms of the secrets that is in the text; empty if none is.
inline QByteArray secretIn(const QByteArray& text, const QByteArrayList& secrets) {
    for (const QByteArray& secret : secrets) {
        for (const QByteArray& form : formsOf(secret)) {
            if (text.contains(form)) {
                return form;
            }
        }
    }
    return {};
}

} // namespace test_support
