#include "browser/engine/DocumentTitle.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype longestTitle = 300;

/// What stands for the title of a document that has none.
bool isAddress(const QString &title, const QUrl &address)
{
    if (title == "about:blank"_L1)
        return true;
    QString plain = address.toString(QUrl::PrettyDecoded);
    QString encoded = QString::fromLatin1(address.toEncoded());
    for (QString *form : {&plain, &encoded}) {
        const QString scheme = address.scheme() + u"://"_s;
        const QString whole = *form;
        if (form->startsWith(scheme))
            form->remove(0, scheme.size());
        const auto isForm = [&title](const QString &text) {
            return title == text || title + u'/' == text || title == text + u'/';
        };
        if (isForm(*form) || isForm(whole))
            return true;
    }
    return false;
}

} // namespace

QString documentTitle(const QString &title, const QUrl &address)
{
    if (isAddress(title, address))
        return {};
    return firstCharacters(title.first(qMin(title.size(), longestTitle * 2)), longestTitle);
}

} // namespace morvane
