#pragma once

#include "model/LocalModelInfo.h"

#include <QObject>
#include <QStringList>

namespace morvane {

class AppModel;

/// Ties the local model to the application: what the windows show of it. Main thread.
class LocalModelFlow : public QObject {
    Q_OBJECT
public:
    explicit LocalModelFlow(AppModel &model);

    const LocalModelInfo &info() const { return m_info; }
    QString pullingModel() const { return m_pullingModel; } ///< Empty while nothing is pulled.

    void installLocalModelIfNeeded();

Q_SIGNALS:
    void changed();

private:
    AppModel &m_model;
    LocalModelInfo m_info;
    QString m_pullingModel;
};

} // namespace morvane
