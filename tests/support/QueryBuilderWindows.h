#pragma once
// Waits until a query builder window has loaded its catalogue (or failed to).
#include "gui/ui/fuAQBuilder.h"

#include <QSignalSpy>

// True when the catalogue loaded; waits only while it is still loading.
inline bool waitForMetadata(TfmAQBuilder *window, int timeoutMs = 20000)
{
    if (window->metadataLoader()->isLoading()) {
        QSignalSpy ready(window, &TfmAQBuilder::metadataReady);
        if (!ready.wait(timeoutMs))
            return false;
    }
    return !window->engine()->isOffline();
}
