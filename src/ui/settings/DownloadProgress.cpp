#include "ui/settings/DownloadProgress.h"

#include <QProgressBar>
#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {

void showDownloadProgress(QProgressBar &bar, std::optional<double> fraction)
{
    bar.setRange(0, fraction ? 100 : 0);
    QString name = u"Download progress"_s;
    if (fraction) {
        const int percent = static_cast<int>(std::floor(std::clamp(*fraction, 0.0, 1.0) * 100));
        bar.setValue(percent);
        name += u" %1%"_s.arg(percent);
    }
    bar.setAccessibleName(name);
}

} // namespace morvane
