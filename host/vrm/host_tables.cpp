// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_services.h"
#include "host/heapkit/memory_handles.h"
#include "host/pixkit/pixel_formats.h"
#include "host/vireo_host.h"

namespace {

// A command line has no main window.
void* getMainWindow() { return nullptr; }

std::uint32_t getPixelFormat(FrameBuffer* handle) { return PixKit::pixelFormat(handle); }

const MemoryFunctions memoryFunctions{{}, HeapKit::newHandle, {}, HeapKit::disposeHandle,
                                      {}, HeapKit::newHandle};
const WindowFunctions windowFunctions{{}, getMainWindow};
const VPixFunctions vpixFunctions{{}, vpixNew, vpixDispose};
const PixelFormatFunctions pixelFormatFunctions{{}, getPixelFormat};
const HostCallbacks hostCallbacks{
    {}, &memoryFunctions, &windowFunctions, &vpixFunctions, &pixelFormatFunctions};
const UtilityServices utilityServices{{}, FxKit::applyChannelTables, FxKit::convolve3x3};

}  // namespace

const HostCallbacks* vireoHostCallbacks(void) { return &hostCallbacks; }

const void* vireoHostServices(void) { return &utilityServices; }
