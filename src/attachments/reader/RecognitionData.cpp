#include "attachments/reader/RecognitionData.h"

#include "attachments/reader/RecognitionLanguages.h"
#include "base/InstalledFiles.h"

#include <QFile>
#include <QLocale>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Where distributions put it. A folder of the user's is none of them.
constexpr std::array folders{"/usr/share/tesseract-ocr/5/tessdata", "/usr/share/tessdata",
                             "/usr/share/tesseract/tessdata", "/usr/local/share/tessdata"};

QStringList wantedLanguages()
{
    return recognitionLanguages(QLocale::system().uiLanguages());
}

QByteArray pathOf(const QByteArray &folder, const QString &language)
{
    return folder + '/' + language.toLatin1() + ".traineddata";
}

FileDescriptor opened(const char *path)
{
    return FileDescriptor(::open(path, O_RDONLY | O_CLOEXEC));
}

} // namespace

std::optional<RecognitionData> RecognitionData::find()
{
    for (const char *folder : folders)
        if (auto found = in(folder))
            return found;
    return std::nullopt;
}

std::optional<RecognitionData> RecognitionData::in(const QByteArray &folder)
{
    if (!opened(pathOf(folder, u"eng"_s).constData()).isOpen())
        return std::nullopt;
    RecognitionData data{folder.toStdString(), {}};
    for (const QString &language : wantedLanguages())
        if (opened(pathOf(folder, language).constData()).isOpen())
            data.languages += (data.languages.empty() ? "" : "+") + language.toStdString();
    return data;
}

void RecognitionData::addTo(DataFiles &files)
{
    for (const char *folder : folders)
        for (const QString &language : wantedLanguages())
            files.add(pathOf(folder, language));
    if (!find())
        for (const QString &language : wantedLanguages())
            files.addAs(pathOf(folders.front(), language), pathOf(broughtAlong(), language));
}

QByteArray RecognitionData::broughtAlong()
{
    return QFile::encodeName(InstalledFiles::aroundHelper().libraryData(u"tessdata"_s));
}

bool RecognitionData::read(const char *path, std::vector<char> *content)
{
    const FileDescriptor file = opened(path);
    struct stat state{};
    if (!file.isOpen() || ::fstat(file.get(), &state) != 0 || state.st_size <= 0)
        return false;
    content->resize(static_cast<std::size_t>(state.st_size));
    // At positions of its own: other threads may be reading the same open file.
    std::size_t have = 0;
    while (have < content->size()) {
        const ssize_t count =
            ::pread(file.get(), content->data() + have, content->size() - have, static_cast<off_t>(have));
        if (count <= 0)
            return false;
        have += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace morvane
