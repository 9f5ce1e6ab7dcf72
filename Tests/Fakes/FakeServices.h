#pragma once

#include "FakeBundleInfo.h"
#include "FakeLoginItem.h"
#include "FakePasteboard.h"
#include "MemoryDefaultsStore.h"
#include "RecordingTelemetrySink.h"
#include "VirtualTime.h"

#include <VelmoraMac/AppState.h>

// Fakes of everything that AppState needs: AppState state(fakes.dependencies());
struct FakeServices {
    VirtualTime time;
    MemoryDefaultsStore defaults;
    FakePasteboard pasteboard{time};
    FakeLoginItem loginItem;
    FakeBundleInfo bundle;
    RecordingTelemetrySink telemetry;

    AppState::Dependencies dependencies()
    {
        return {.defaults = defaults,
                .pasteboard = pasteboard,
                .loginItem = loginItem,
                .bundle = bundle,
                .clock = time.wallClock(),
                .telemetry = telemetry};
    }
};
