// Searching a large tree: contents without a match and with 50 lines, a regular expression, names. Runs on a
// folder given as argument, or on a tree of 40,000 files and about 500 MB that it makes and removes again.
// Where ripgrep ("rg") and fd ("fdfind") are installed, they do the same work in turn with us. Prints JSON.

#include "support/TemporaryHome.h"
#include "tools/SearchTools.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int runs = 5;
constexpr int folders = 400;
constexpr int filesEach = 100;
/// Of a file, in words of about six bytes; most files are small, a few are large, as in source trees.
constexpr int smallFile = 800;
constexpr int largeFile = 30000;
constexpr int largeFileEvery = 25;
/// Beyond the files that a search for 50 lines needs to see, but not many.
constexpr int markEvery = 100;

QByteArray textOf(std::mt19937 &random, int words)
{
    QByteArray text;
    text.reserve(words * 7);
    for (int word = 0; word < words; ++word) {
        std::uint32_t letters = random();
        for (int letter = 0; letter < 5; ++letter, letters /= 26)
            text += static_cast<char>('a' + letters % 26);
        text += word % 12 == 11 ? '\n' : ' ';
    }
    return text;
}

void makeTree(const QString &root)
{
    std::mt19937 random(1); // NOLINT: the same tree each time is the point
    int number = 0;
    for (int folder = 0; folder < folders; ++folder) {
        const QString path = root + u"/part%1/section%2"_s.arg(folder % 20).arg(folder);
        QDir().mkpath(path);
        for (int i = 0; i < filesEach; ++i, ++number) {
            QFile file(path + u"/file%1.txt"_s.arg(i));
            if (!file.open(QIODevice::WriteOnly))
                qFatal("cannot write the tree");
            file.write(textOf(random, number % largeFileEvery == 0 ? largeFile : smallFile));
            if (number % markEvery == 0)
                file.write("a MARKED line\n");
        }
    }
}

struct Figures {
    double median = 0;
    double fastest = 0;
};

Figures figuresOf(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times.empty() ? Figures() : Figures{times[times.size() / 2], times.front()};
}

double timed(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void runPeer(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    process.waitForFinished(-1);
}

/// Our search and the peer's by turns, so that both see the same machine.
void compare(const char *name, const std::function<void()> &ours, const QString &peer,
             const QStringList &peerArguments, const char *end)
{
    const bool hasPeer = !QStandardPaths::findExecutable(peer).isEmpty();
    std::vector<double> own;
    std::vector<double> other;
    for (int run = 0; run < runs; ++run) {
        own.push_back(timed(ours));
        if (hasPeer)
            other.push_back(timed([&] { runPeer(peer, peerArguments); }));
    }
    const Figures ownFigures = figuresOf(own);
    const Figures otherFigures = figuresOf(other);
    std::printf(" \"%s\": {\"median_ms\": %.1f, \"min_ms\": %.1f", name, ownFigures.median,
                ownFigures.fastest);
    if (hasPeer) {
        std::printf(", \"%s_median_ms\": %.1f, \"%s_min_ms\": %.1f", qPrintable(peer), otherFigures.median,
                    qPrintable(peer), otherFigures.fastest);
    }
    std::printf("}%s\n", end);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const TemporaryHome home;
    QString root = home.path() + u"/tree"_s;
    if (argc > 1)
        root = QString::fromLocal8Bit(argv[1]);
    else
        makeTree(root);

    const auto grep = [&root](const QString &pattern) {
        return [&root, pattern] { SearchTools::grepSearch(pattern, root, {}); };
    };
    const QString absent = u"zyxwabsentzyxw"_s;
    const QString expression = u"zq[0-9]+x?absent"_s;
    grep(absent)(); // the files come into memory once for all
    std::printf("{");
    compare("text_without_a_match", grep(absent), u"rg"_s, {u"-uu"_s, absent, root}, ",");
    compare("expression_without_a_match", grep(expression), u"rg"_s, {u"-uu"_s, expression, root}, ",");
    compare("50_lines", grep(u"MARKED"_s), u"rg"_s, {u"-uu"_s, u"MARKED"_s, root}, ",");
    compare(
        "names_without_a_match", [&] { SearchTools::globFind(absent, root); }, u"fdfind"_s,
        {u"-uu"_s, absent, root}, "}");
    return 0;
}
