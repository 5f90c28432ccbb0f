#pragma once

#include <QTextCodec>

namespace test_support {

/// Makes the local 8-bit encoding, while it lives, one that replaces each character by the next
/// one, so that a test sees where that encoding is used.
class shifting_locale_codec : public QTextCodec {
public:
    shifting_locale_codec() { setCodecForLocale(this); }
    ~shifting_locale_codec() override { setCodecForLocale(nullptr); }

    QByteArray name() const override { return "kelvro-test-shift"; }
    int mibEnum() const override { return -424242; }

protected:
    QString convertToUnicode(const char* bytes, int length, ConverterState*) const override {
        return QString::fromLatin1(bytes, length);
    }
    QByteArray convertFromUnicode(const QChar* characters, int length,
                                  ConverterState*) const override {
        QByteArray shifted = QString{characters, length}.toLatin1();
        for (char& character : shifted) {
            ++character;
        }
        return shifted;
    }
};

} // namespace test_support
