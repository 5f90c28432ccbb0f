#include "tests/secured/certificates.h"

#include "tests/support/qt_literals.h"
#include "tests/support/server_process.h"

#include <QFile>

#include <stdexcept>

namespace test_support {

using namespace literals;

namespace {

const QString thisMachine = QStringLiteral("IP:127.0.0.1,DNS:localhost");

QByteArray contentOf(const QString& name) {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + name.toStdString());
    }
    return file.readAll();
}

void join(const Certificates::Certificate& certificate) {
    QFile file(certificate.both);
    if (!file.open(QIODevice::WriteOnly)) {
        throw std::runtime_error("cannot write " + certificate.both.toStdString());
    }
    file.write(contentOf(certificate.key) + contentOf(certificate.certificate));
}

} // namespace

Certificates::Certificates()
    : m_authority(makeAuthority("authority"_q)),
      m_unknownAuthority(makeAuthority("unknown-authority"_q)) {}

Certificates::Certificate Certificates::forThisMachine() const {
    return sign("server"_q, m_authority, thisMachine);
}

Certificates::Certificate Certificates::expired() const {
    return sign("expired"_q, m_authority, thisMachine,
                {"-not_before"_q, "20200101000000Z"_q, "-not_after"_q, "20200102000000Z"_q});
}

Certificates::Certificate Certificates::forAnotherHost() const {
    return sign("another-host"_q, m_authority, "DNS:another.example"_q);
}

Certificates::Certificate Certificates::byUnknownAuthority() const {
    return sign("unknown"_q, m_unknownAuthority, thisMachine);
}

Certificates::Certificate Certificates::forClient() const {
    return sign("client"_q, m_authority, "DNS:client.example"_q);
}

Certificates::Certificate Certificates::forClient(const QString& password) const {
    auto certificate = forClient();
    const auto encrypted = path("encrypted.key"_q);
    runProgram("openssl"_q, {"pkcs8"_q, "-topk8"_q, "-in"_q, certificate.key, "-out"_q, encrypted,
                             "-passout"_q, "pass:"_q + password});
    certificate.key = encrypted;
    certificate.both = path("encrypted.pem"_q);
    join(certificate);
    return certificate;
}

Certificates::Certificate Certificates::make(const QString& name,
                                             const QStringList& options) const {
    const Certificate made{.certificate = path(name + ".crt"_q),
                           .key = path(name + ".key"_q),
                           .both = path(name + ".pem"_q)};
    runProgram("openssl"_q,
               QStringList{"req"_q, "-x509"_q, "-newkey"_q, "ec"_q, "-pkeyopt"_q,
                           "ec_paramgen_curve:prime256v1"_q, "-nodes"_q, "-subj"_q, "/CN="_q + name,
                           "-keyout"_q, made.key, "-out"_q, made.certificate} +
                   options);
    join(made);
    return made;
}

Certificates::Certificate Certificates::makeAuthority(const QString& name) const {
    return make(name, {"-addext"_q, "keyUsage=critical,keyCertSign"_q});
}

Certificates::Certificate Certificates::sign(const QString& name, const Certificate& authority,
                                             const QString& alternativeNames,
                                             const QStringList& options) const {
    return make(name, QStringList{"-CA"_q, authority.certificate, "-CAkey"_q, authority.key,
                                  "-addext"_q, "basicConstraints=CA:FALSE"_q, "-addext"_q,
                                  "subjectAltName="_q + alternativeNames} +
                          options);
}

} // namespace test_support
