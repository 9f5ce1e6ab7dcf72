#pragma once

#include "FakeBundleInfo.h"
#include "FakeLoginItem.h"
#include "FakePasteboard.h"
#include "MemoryDefaultsStore.h"
#include "RecordingTelemetrySink.h"
#include "VirtualTime.h"

#include <VelmoraMac/AppState.h>

// Fakes of everything that AppState needs: AppState state(fakes.services());
struct FakeServices {
    VirtualTime time;
    MemoryDefaultsStore defaults;
    FakePasteboard pasteboard{time};
    FakeLoginItem loginItem;
    FakeBundleInfo bundle;
    RecordingTelemetrySink telemetry;

    AppState::Services services()
    {
        return {defaults, pasteboard, loginItem, bundle, time.wallClock(), telemetry};
    }
};
