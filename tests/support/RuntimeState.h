#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace morvane {

/// What the program `scripted-runtime` knows and was asked, in a folder of its own (see its source). Its
/// server is killed at the end.
class RuntimeState {
public:
    /// Makes the folder.
    explicit RuntimeState(QString folder);
    ~RuntimeState();
    RuntimeState(const RuntimeState &) = delete;
    RuntimeState &operator=(const RuntimeState &) = delete;

    const QString &folder() const { return m_folder; }

    /// Writes a file at once, so that no half of it is ever read.
    void tell(const QString &file, const QByteArray &content = "x") const;
    void forget(const QString &file) const;
    QByteArray known(const QString &file) const;

    /// What the program was called for, oldest first.
    QStringList calls() const;
    /// What the server was asked to answer, oldest first, without the request that only loads the model.
    QList<QJsonObject> chats() const;

private:
    QString m_folder;
};

} // namespace morvane
