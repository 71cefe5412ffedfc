#include "providers/ModelList.h"

#include "base/Json.h"
#include "base/NameOrder.h"
#include "providers/Log.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

namespace json = boost::json;

/// What a price counts as that is missing or cannot be read: any but free.
constexpr double unknownPrice = 1.0;

double price(const json::object &pricing, std::string_view key)
{
    const json::value *value = pricing.if_contains(key);
    if (!value || !value->is_string())
        return unknownPrice;
    const json::string &text = value->get_string();
    double number = unknownPrice;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : unknownPrice;
}

bool costsNothing(const json::object &entry)
{
    const json::object *pricing = objectMember(entry, "pricing");
    return pricing && price(*pricing, "prompt") == 0 && price(*pricing, "completion") == 0;
}

bool generatesContent(const json::object &entry)
{
    const json::array *methods = arrayMember(entry, "supportedGenerationMethods");
    return methods && std::any_of(methods->begin(), methods->end(), [](const json::value &method) {
               return method.is_string() && method.get_string() == "generateContent";
           });
}

/// The list's place in the reply and the name's in an entry.
struct Form {
    std::string_view list = "data";
    std::string_view name = "id";
};

Form formOf(ProviderID provider)
{
    if (provider == ProviderID::gemini || provider == ProviderID::ollama)
        return {"models", "name"};
    return {};
}

QString shownName(ProviderID provider, QString name)
{
    const auto geminiPrefix = u"models/"_s;
    if (provider == ProviderID::gemini && name.startsWith(geminiPrefix))
        name.remove(0, geminiPrefix.size());
    if (provider == ProviderID::ollama)
        name.remove(u":latest"_s);
    return name;
}

bool isOffered(ProviderID provider, const json::object &entry, const QString &name)
{
    if (provider == ProviderID::gemini)
        return generatesContent(entry);
    if (provider == ProviderID::groq || provider == ProviderID::openai)
        return !isNonChatOpenAIStyle(name);
    return true;
}

std::optional<bool> isFree(ProviderID provider, const json::object &entry, const QString &name)
{
    switch (provider) {
    case ProviderID::gemini:
    case ProviderID::groq:
    case ProviderID::ollama:
        return true;
    case ProviderID::openai:
        return false;
    case ProviderID::openrouter:
        return costsNothing(entry);
    case ProviderID::zen:
        return name.endsWith(u"-free"_s) || name == u"big-pickle"_s;
    case ProviderID::custom:
        break;
    }
    return std::nullopt;
}

bool canBeShown(const QString &name)
{
    return !name.isEmpty() && name.size() <= longestModelName &&
           std::none_of(name.begin(), name.end(),
                        [](QChar c) { return c.category() == QChar::Other_Control; });
}

int rank(const std::optional<bool> &isFree)
{
    if (!isFree)
        return 1;
    return *isFree ? 0 : 2;
}

} // namespace

CatalogModels modelListFromReply(ProviderID provider, QByteArrayView reply)
{
    const Form form = formOf(provider);
    const auto parsed = parseJsonObject(reply);
    const json::array *entries = parsed ? arrayMember(*parsed, form.list) : nullptr;
    if (!entries) {
        qCWarning(providersLog) << "no list of models: the reply has another form;" << reply.size()
                                << "bytes";
        return std::nullopt;
    }
    QList<CatalogModel> models;
    for (const json::value &value : *entries) {
        const json::object *entry = value.if_object();
        const json::value *nameValue = entry ? entry->if_contains(form.name) : nullptr;
        // Looked at in bytes first, so that a huge text is not even converted.
        if (!nameValue || !nameValue->is_string() || nameValue->get_string().size() > 4 * longestModelName)
            continue;
        const QString name = shownName(provider, textFromJson(nameValue->get_string()));
        if (!canBeShown(name) || !isOffered(provider, *entry, name))
            continue;
        models.append({name, isFree(provider, *entry, name)});
        if (models.size() == mostListedModels)
            break;
    }
    return finished(models);
}

CatalogModels finished(const QList<CatalogModel> &list)
{
    if (list.isEmpty())
        return std::nullopt;
    struct Place {
        int rank;
        QByteArray key;
        const CatalogModel *model;
    };
    const NameOrder order;
    std::vector<Place> places;
    places.reserve(static_cast<std::size_t>(list.size()));
    for (const CatalogModel &model : list)
        places.push_back({rank(model.isFree), order.sortKey(model.name), &model});
    // The place in the list makes the order a stable one.
    std::sort(places.begin(), places.end(), [](const Place &left, const Place &right) {
        return std::tie(left.rank, left.key, left.model) < std::tie(right.rank, right.key, right.model);
    });
    QList<CatalogModel> sorted;
    sorted.reserve(list.size());
    for (const Place &place : places)
        sorted.append(*place.model);
    return sorted;
}

bool isNonChatOpenAIStyle(QStringView id)
{
    static constexpr std::array others{u"embedding",  u"whisper",    u"tts",     u"dall-e",
                                       u"moderation", u"transcribe", u"babbage", u"davinci"};
    const QString lowered = id.toString().toLower();
    return std::any_of(others.begin(), others.end(),
                       [&lowered](const char16_t *part) { return lowered.contains(QStringView(part)); });
}

} // namespace morvane
