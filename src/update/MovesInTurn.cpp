#include "update/MovesInTurn.h"

#include "base/FileDescriptor.h"

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane {

namespace {

int move(const QByteArray &from, const QByteArray &to)
{
    return ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), 0) == 0 ? 0 : errno;
}

MovesInTurn makeMoves(const QByteArray &place, const QByteArray &away, const QByteArray &next)
{
    MovesInTurn moves{move(place, away)};
    if (moves.first == 0)
        moves.second = move(next, place);
    if (moves.second != 0)
        move(away, place);
    return moves;
}

} // namespace

MovesInTurn moveInTurn(const QString &place, const QString &away, const QString &next)
{
    const QByteArray from = QFile::encodeName(place);
    const QByteArray aside = QFile::encodeName(away);
    const QByteArray with = QFile::encodeName(next);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return {errno};
    const FileDescriptor answer(ends[0]);
    FileDescriptor report(ends[1]);
    const pid_t mover = ::fork();
    if (mover < 0)
        return {errno};
    if (mover == 0) {
        ::setsid(); // what ends the program's group does not end it
        const MovesInTurn moves = makeMoves(from, aside, with);
        const bool isTold = ::write(report.get(), &moves, sizeof moves) == sizeof moves;
        ::_exit(isTold ? 0 : 1);
    }
    report.close();
    MovesInTurn moves;
    ssize_t size = 0;
    do
        size = ::read(answer.get(), &moves, sizeof moves);
    while (size < 0 && errno == EINTR);
    while (::waitpid(mover, nullptr, 0) < 0 && errno == EINTR)
        ;
    return size == sizeof moves ? moves : MovesInTurn{ECANCELED};
}

} // namespace morvane
