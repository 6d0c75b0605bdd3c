// SPDX-License-Identifier: MIT
// A host for the filters in plain C: lists what a module holds, or renders one picture with one of them.
//   host MODULE                        lists ids and names
//   host MODULE ID IN.ppm OUT.ppm      renders with the filter's own start values
#include "host/vireo_host.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#if defined(_WIN32)
#include "host/win32.h"
#else
#include <dlfcn.h>
#endif

// Records hold pointers as 8-byte addresses, which C casts by way of uintptr_t.
#define ADDRESS(pointer) ((uint64_t)(uintptr_t)(pointer))
#define POINTER(type, address) ((type)(uintptr_t)(address))

static MetaPluginFunction* module;

static void fail(const char* what, const char* name) {
    fprintf(stderr, "%s %s\n", what, name);
    exit(1);
}

static void load(const char* path) {
#if defined(_WIN32)
    HMODULE library = LoadLibraryA(path);
    module = library ? (MetaPluginFunction*)(void*)GetProcAddress(library, "VRMetaPlugin") : NULL;
#else
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    module = library ? (MetaPluginFunction*)dlsym(library, "VRMetaPlugin") : NULL;
#endif
    MetaPluginInitialiseRecord record = {0x0409};
    if (module == NULL || module(MetaPluginInitialise, &record) != MetaPluginDone) fail("cannot load", path);
}

// A property list is a version, a count, and properties: vendor, key, id and length, 4 bytes each, then the
// data, filled up to a multiple of 4. The name is a counted text, "$$$/key=Text".
static void printName(uint32_t id, uint32_t index) {
    uint8_t bytes[4096];
    MetaPluginPropertyListRecord list = {.index = index, .buffer = ADDRESS(bytes), .size = sizeof bytes};
    if (module(MetaPluginPropertyList, &list) != MetaPluginDone) return;
    for (const uint8_t* property = bytes + 8; property < bytes + list.size;) {
        uint32_t length;
        memcpy(&length, property + 12, 4);
        if (memcmp(property + 4, "eman", 4) == 0) {  // "name", last character first
            const char* text = (const char*)property + 17;
            const char* equals = memchr(text, '=', property[16]);
            const char* name = equals ? equals + 1 : text;
            printf("%u  %.*s\n", id, (int)(text + property[16] - name), name);
        }
        property += 16 + (length + 3) / 4 * 4;
    }
}

// Buffers hold the bottom row first, and pixels as blue, green, red, alpha. Copies a picture's rows, red,
// green, blue, top row first, from or to a file.
static int transfer(FILE* file, FrameBuffer* frame, int writes) {
    const int32_t width = frame->bounds.right, height = frame->bounds.bottom;
    for (int32_t y = height - 1; y >= 0; --y) {
        uint8_t* pixel = (uint8_t*)vpixGetPixels(frame) + (ptrdiff_t)y * vpixGetRowbytes(frame);
        for (int32_t x = 0; x < width; ++x, pixel += 4) {
            uint8_t rgb[3] = {pixel[2], pixel[1], pixel[0]};
            if ((writes ? fwrite(rgb, 3, 1, file) : fread(rgb, 3, 1, file)) != 1) return 0;
            if (!writes) pixel[2] = rgb[0], pixel[1] = rgb[1], pixel[0] = rgb[2], pixel[3] = 255;
        }
    }
    return 1;
}

static FrameBuffer* readPicture(const char* path) {
    FrameRect bounds = {0, 0, 0, 0};
    FILE* file = fopen(path, "rb");
    if (!file || fscanf(file, "P6 %d %d 255%*c", &bounds.right, &bounds.bottom) != 2)
        fail("cannot read", path);
    FrameBuffer* frame = vpixNew(&bounds);
    if (frame == NULL || !transfer(file, frame, 0)) fail("cannot read", path);
    fclose(file);
    return frame;
}

static void writePicture(const char* path, FrameBuffer* frame) {
    FILE* file = fopen(path, "wb");
    if (!file) fail("cannot write", path);
    fprintf(file, "P6\n%d %d\n255\n", frame->bounds.right, frame->bounds.bottom);
    const int whole = transfer(file, frame, 1);
    if (fclose(file) != 0 || !whole) fail("cannot write", path);
}

static void render(FilterEntryProc filter, FrameBuffer* source, FrameBuffer* destination) {
    const TimeBase timeBase = {.fieldDuration = 1};  // Time counts fields: frame n is at 2 n.
    FilterInvocation invocation = {.sourceFrame = ADDRESS(source),
                                   .destFrame = ADDRESS(destination),
                                   .clipDuration = 2,
                                   .hostInstanceData = ADDRESS(vireoHostServices()),
                                   .timeBase = ADDRESS(&timeBase),
                                   .hostCallbacks = ADDRESS(vireoHostCallbacks())};
    FilterInvocation* pointer = &invocation;
    filter(NULL, FilterSelectorInitSettings, &pointer);
    // What a filter leaves alone shows the picture.
    vpixCopy(source, destination, &source->bounds, &source->bounds, VPixCopyReplace);
    if (filter(NULL, FilterSelectorExecute, &pointer) != 0) fail("cannot render", "the picture");

    const MemoryFunctions* memory = POINTER(const MemoryFunctions*, vireoHostCallbacks()->memory);
    POINTER(DisposeHandleFunction*, memory->disposeHandle)(POINTER(MemoryHandle, invocation.settingsHandle));
}

int main(int count, char** words) {
    if (count != 2 && count != 5) fail("usage: host MODULE", "[ID IN.ppm OUT.ppm]");
    load(words[1]);
    FilterEntryProc filter = NULL;
    MetaPluginEntryRecord entry = {0};
    for (; module(MetaPluginEntryInformation, &entry) == MetaPluginDone; ++entry.index) {
        if (count == 2) printName(entry.id, entry.index);
        if (count == 5 && entry.id == strtoul(words[2], NULL, 10))
            filter = POINTER(FilterEntryProc, entry.entry);
    }
    if (count == 5) {
        if (filter == NULL) fail("there is no filter", words[2]);
        FrameBuffer* source = readPicture(words[3]);
        FrameBuffer* destination = vpixNew(&source->bounds);
        if (destination == NULL) fail("no memory for", words[4]);
        render(filter, source, destination);
        writePicture(words[4], destination);
        vpixDispose(destination);
        vpixDispose(source);
    }
    module(MetaPluginTerminate, NULL);
    return 0;
}
