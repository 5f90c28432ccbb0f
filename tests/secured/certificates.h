#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace test_support {

/// Certificates for servers of a test's own, made anew by the openssl program: of an authority, and
/// of one that nobody knows. All file names are whole paths; every file is PEM.
class Certificates {
public:
    /// A certificate with its key, in two files, and in one as MongoDB's clients want it.
    struct Certificate {
        QString certificate;
        QString key;
        QString both;
    };

    Certificates();

    const QString& authority() const { return m_authority.certificate; }

    /// For 127.0.0.1 and localhost, by the authority, valid now.
    Certificate forThisMachine() const;
    Certificate expired() const;
    Certificate forAnotherHost() const;
    Certificate byUnknownAuthority() const;
    Certificate forClient() const;
    /// The key is encrypted with that password.
    Certificate forClient(const QString& password) const;

private:
    Certificate make(const QString& name, const QStringList& options) const;
    Certificate makeAuthority(const QString& name) const;
    Certificate sign(const QString& name, const Certificate& authority,
                     const QString& alternativeNames, const QStringList& options = {}) const;
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    Certificate m_authority;
    Certificate m_unknownAuthority;
};

} // namespace test_support
