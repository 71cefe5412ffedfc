#pragma once

#include <QDataStream>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <cstdint>

namespace morvane {

/// What another program's element is to do, as the process that carries it there is told it: its length in
/// bytes as a std::uint32_t, and this by QDataStream.
struct ActionRequest {
    QString address; ///< Of the lines to the program.
    QString path;
    QString interface;
    QString method;
    QVariantList arguments = {}; ///< Whole numbers, numbers and texts.
    QStringList dialogs = {};    ///< That the program has open now, by their paths.
    qint64 pid = 0;              ///< The program's process.
    quint32 number = 0;          ///< For the answers.
};

/// What is answered to one request. ActionRequest::number says to which.
struct ActionSign {
    enum class Kind : std::uint32_t {
        sent, ///< Comes first, once there is a line.
        yes,
        no,
        failed,
        ended, ///< The program went before it answered, as one does whose button says "Quit".
    };
    Kind kind = Kind::failed;
    std::uint32_t number = 0;
};

inline QDataStream &operator<<(QDataStream &stream, const ActionRequest &request)
{
    return stream << request.address << request.path << request.interface << request.method
                  << request.arguments << request.dialogs << request.pid << request.number;
}

inline QDataStream &operator>>(QDataStream &stream, ActionRequest &request)
{
    return stream >> request.address >> request.path >> request.interface >> request.method >>
           request.arguments >> request.dialogs >> request.pid >> request.number;
}

} // namespace morvane
