#include "attachments/reader/RecognitionLanguages.h"

#include <QLocale>
#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Languages whose data is not called by their code of three letters, or not in every script.
struct OtherName {
    QLocale::Language language;
    QLocale::Script script; ///< Any for all.
    QLatin1String name;
};

constexpr OtherName otherNames[] = {
    {QLocale::Chinese, QLocale::SimplifiedHanScript, "chi_sim"_L1},
    {QLocale::Chinese, QLocale::TraditionalHanScript, "chi_tra"_L1},
    {QLocale::Cantonese, QLocale::SimplifiedHanScript, "chi_sim"_L1},
    {QLocale::Cantonese, QLocale::TraditionalHanScript, "chi_tra"_L1},
    {QLocale::NorwegianBokmal, QLocale::AnyScript, "nor"_L1},
    {QLocale::NorwegianNynorsk, QLocale::AnyScript, "nor"_L1},
    {QLocale::Kurdish, QLocale::AnyScript, "kmr"_L1},
    {QLocale::Serbian, QLocale::LatinScript, "srp_latn"_L1},
    {QLocale::Azerbaijani, QLocale::CyrillicScript, "aze_cyrl"_L1},
    {QLocale::Uzbek, QLocale::CyrillicScript, "uzb_cyrl"_L1},
};

QString nameFor(const QLocale &locale)
{
    const auto other = std::find_if(std::begin(otherNames), std::end(otherNames), [&](const OtherName &name) {
        return name.language == locale.language() &&
               (name.script == QLocale::AnyScript || name.script == locale.script());
    });
    return other != std::end(otherNames) ? QString(other->name)
                                         : QLocale::languageToCode(locale.language(), QLocale::ISO639Part2T);
}

} // namespace

QStringList recognitionLanguages(const QStringList &locales)
{
    QStringList names;
    for (const QString &locale : locales)
        if (const QLocale known(locale); known.language() != QLocale::C)
            names.append(nameFor(known));
    names.append(u"eng"_s);
    names.removeAll(QString());
    names.removeDuplicates();
    return names;
}

} // namespace morvane
