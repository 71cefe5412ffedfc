#pragma once

#include <QList>
#include <QString>

namespace morvane {

/// One local model that fits a machine. Identified by its name.
struct LocalModelRecommendation {
    QString name;
    double downloadGB = 0;
    int ramRequiredGB = 0;
    QString badge;
    QString note;

    bool operator==(const LocalModelRecommendation &) const = default;
};

/// The three models to offer on a machine with this much memory, the best first. Any thread.
QList<LocalModelRecommendation> recommendations(int ramGB);

} // namespace morvane
