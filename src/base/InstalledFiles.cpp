#include "base/InstalledFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Not by the application object, which some helper programs do without.
QString folderOfThisProgram()
{
    return QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
}

} // namespace

InstalledFiles InstalledFiles::aroundProgram()
{
    return InstalledFiles(QFileInfo(folderOfThisProgram()).path());
}

InstalledFiles InstalledFiles::aroundHelper()
{
    const QString root = folderOfThisProgram() + u'/' + QStringLiteral(MORVANE_ROOT_FROM_HELPERS);
    return InstalledFiles(QDir::cleanPath(root));
}

QString InstalledFiles::helper(const QString &name) const
{
    return m_root + u'/' + QStringLiteral(MORVANE_HELPERS) + u'/' + name;
}

QString InstalledFiles::module(const QString &name) const
{
    return m_root + u'/' + QStringLiteral(MORVANE_LIBRARIES) + u'/' + name;
}

QString InstalledFiles::sounds() const
{
    return libraryData(u"sounds"_s);
}

QString InstalledFiles::help() const
{
    return libraryData(u"help/index.html"_s);
}

QString InstalledFiles::libraryData(const QString &name) const
{
    return m_root + u'/' + QStringLiteral(MORVANE_DATA) + u'/' + name;
}

} // namespace morvane
