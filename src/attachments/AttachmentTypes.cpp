#include "attachments/AttachmentTypes.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr std::array pictures{"png", "jpg", "jpeg", "heic", "heif", "gif", "webp", "bmp", "tiff"};
constexpr std::array documents{"pdf"};
constexpr std::array texts{"txt",  "md",    "markdown", "swift", "py",        "js",  "ts",   "tsx",  "jsx",
                           "html", "css",   "json",     "csv",   "tsv",       "xml", "yaml", "yml",  "sh",
                           "zsh",  "bash",  "c",        "h",     "cpp",       "hpp", "m",    "mm",   "java",
                           "kt",   "rb",    "go",       "rs",    "sql",       "log", "tex",  "toml", "ini",
                           "cfg",  "conf",  "plist",    "env",   "gitignore", "r",   "php",  "pl",   "lua",
                           "dart", "scala", "vue",      "svelte"};

template <std::size_t Count> QStringList toStrings(const std::array<const char *, Count> &names)
{
    QStringList strings;
    for (const char *name : names)
        strings.append(QString::fromLatin1(name));
    return strings;
}

} // namespace

std::optional<AttachmentKind> kindOfContentType(const QMimeType &type)
{
    const auto is = [&type](const char *name) { return type.inherits(QString::fromLatin1(name)); };
    const bool isPdf = is("application/pdf");
    if (type.name().startsWith("image/"_L1) && !isPdf)
        return AttachmentKind::image;
    if (isPdf)
        return AttachmentKind::pdf;
    if (type.name().startsWith("text/"_L1) || is("text/plain") || is("application/json") ||
        is("application/xml"))
        return AttachmentKind::text;
    return std::nullopt;
}

std::optional<AttachmentKind> kindOfExtension(const QString &extension)
{
    for (const AttachmentKind kind : {AttachmentKind::image, AttachmentKind::pdf, AttachmentKind::text})
        if (extensionsOf(kind).contains(extension))
            return kind;
    return std::nullopt;
}

QStringList extensionsOf(AttachmentKind kind)
{
    switch (kind) {
    case AttachmentKind::image:
        return toStrings(pictures);
    case AttachmentKind::pdf:
        return toStrings(documents);
    case AttachmentKind::text:
        return toStrings(texts);
    }
    Q_UNREACHABLE();
}

} // namespace morvane
