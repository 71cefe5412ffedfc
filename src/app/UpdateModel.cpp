#include "app/UpdateModel.h"

namespace morvane {

void UpdateModel::setAvailableUpdate(const UpdateInfo &update, Necessity necessity)
{
    m_availableUpdate = update;
    m_necessity = necessity;
    Q_EMIT changed();
}

} // namespace morvane
