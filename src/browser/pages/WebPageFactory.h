#pragma once

#include "browser/pages/WebPage.h"

#include <memory>

namespace morvane {

/// Makes the pages of all tabs, which share cookies and what sites store. Main thread.
class WebPageFactory {
public:
    virtual ~WebPageFactory() = default;

    /// An empty page. It ends before the factory.
    virtual std::unique_ptr<WebPage> makePage() = 0;
    /// Forgets cookies, caches and all that sites have stored. Nothing waits for its end.
    virtual void removeAllSiteData() = 0;
};

} // namespace morvane
