#include "update/UpdateInfo.h"

#include "base/Json.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A version is spoken, shown and signed.
constexpr qsizetype longestVersion = 100;

bool isShortLine(const QString &text)
{
    return text.size() <= longestVersion &&
           std::all_of(text.begin(), text.end(), [](QChar letter) { return letter.isPrint(); });
}

bool isWebAddress(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == "https"_L1 || url.scheme() == "http"_L1);
}

bool isAbsent(const boost::json::object &object, std::string_view key)
{
    const auto *value = object.if_contains(key);
    return !value || value->is_null();
}

std::optional<QStringList> textsMember(const boost::json::object &object, std::string_view key)
{
    const boost::json::array *array = arrayMember(object, key);
    if (!array)
        return std::nullopt;
    QStringList texts;
    texts.reserve(static_cast<qsizetype>(array->size()));
    for (const boost::json::value &value : *array) {
        const boost::json::string *text = value.if_string();
        if (!text)
            return std::nullopt;
        texts.append(textFromJson(*text));
    }
    return texts;
}

/// Of a key that may be missing: what `read` finds, `none` where there is nothing to read.
template <class Value, class Read>
std::optional<Value> optionalMember(const boost::json::object &object, std::string_view key, Value none,
                                    Read read)
{
    return isAbsent(object, key) ? std::optional(std::move(none)) : read(object, key);
}

} // namespace

std::optional<UpdateInfo> UpdateInfo::fromJson(QByteArrayView json)
{
    const auto object = parseJsonObject(json);
    if (!object)
        return std::nullopt;
    const auto version = stringMember(*object, "version");
    const auto build = integerMember(*object, "build");
    const auto date = stringMember(*object, "date");
    const auto dmg = stringMember(*object, "dmg");
    const auto sha256 = stringMember(*object, "sha256");
    const auto notes = textsMember(*object, "notes");
    const auto requiredVersions = optionalMember(*object, "requiredVersions", QStringList(), &textsMember);
    const auto required = optionalMember(*object, "required", false, &booleanMember);
    const auto signature = optionalMember(*object, "signature", QString(), &stringMember);
    if (!version || !build || !date || !dmg || !sha256 || !notes || !requiredVersions || !required ||
        !signature)
        return std::nullopt;
    if (!isShortLine(*version) || !isWebAddress(*dmg))
        return std::nullopt;
    return UpdateInfo{*version,          *build,    *date,     *dmg, *sha256, *notes,
                      *requiredVersions, *required, *signature};
}

QUrl UpdateInfo::cacheBustedDownloadURL() const
{
    const QString text =
        dmg + (dmg.contains(u'?') ? u'&' : u'?') + u"v=%1-build%2"_s.arg(version, QString::number(build));
    const QUrl busted(text, QUrl::StrictMode);
    return busted.isValid() ? busted : url();
}

} // namespace morvane
