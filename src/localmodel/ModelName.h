#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

/// A model's name without ":latest", which is meant where a name has no tag.
QString withoutLatest(QString name);

/// Whether the list has this model, with or without ":latest" on either side.
bool containsModel(const QStringList &names, const QString &name);

/// The names in what the program prints for "list", in its order and without ":latest".
QStringList modelsInList(const QString &output);

} // namespace morvane
