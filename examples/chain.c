// SPDX-License-Identifier: MIT
// The engine in plain C: renders a picture through a chain of filters that is given as text.
//   chain IN.ppm OUT.ppm "Levels:(rgb) gamma=130; Camera Blur"
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vireo/vireo.h>

static void fail(const char* what, const char* about) {
    fprintf(stderr, "%s %s\n", what, about);
    exit(1);
}

/// Ends the program where a call failed, with a mark under the place in the chain's text that it is about.
static void check(VireoStatus status, const char* text) {
    if (status == VireoDone) return;
    const VireoError* error = vireoLastError();
    fprintf(stderr, "%s\n", error->sentence);
    if (text != NULL && error->offset >= 0) fprintf(stderr, "%s\n%*s\n", text, (int)error->offset + 1, "^");
    exit(1);
}

static VireoFrame readPicture(const char* path) {
    VireoFrame frame = {.structSize = sizeof frame, .layout = VireoRgb};
    char format[3] = "", newline = 0;
    int most = 0;
    FILE* file = fopen(path, "rb");
    if (file == NULL) fail("cannot read", path);
    if (fscanf(file, "%2s %d %d %d%c", format, &frame.width, &frame.height, &most, &newline) != 5 ||
        strcmp(format, "P6") != 0 || most != 255 || frame.width < 1 || frame.width > 1 << 26 ||
        frame.height < 1)
        fail("no picture in 8-bit PPM without comments:", path);
    frame.stride = 3 * (int64_t)frame.width;
    frame.pixels = calloc((size_t)frame.height, (size_t)frame.stride);
    if (frame.pixels == NULL) fail("too large:", path);
    if (fread(frame.pixels, (size_t)frame.stride, (size_t)frame.height, file) != (size_t)frame.height)
        fail("cut off:", path);
    fclose(file);
    return frame;
}

static void writePicture(const VireoFrame* frame, const char* path) {
    FILE* file = fopen(path, "wb");
    if (file == NULL) fail("cannot write", path);
    fprintf(file, "P6\n%d %d\n255\n", frame->width, frame->height);
    for (int y = 0; y < frame->height; ++y)
        fwrite((char*)frame->pixels + y * frame->stride, 3, (size_t)frame->width, file);
    if (ferror(file) | fclose(file)) fail("cannot write", path);
}

int main(int count, char** words) {
    if (count != 4) fail("usage: chain IN.ppm OUT.ppm", "CHAIN");
    VireoEngine* engine;
    VireoChain* chain;
    check(vireoOpen(NULL, &engine), NULL);
    check(vireoChainNew(engine, &chain), NULL);
    check(vireoChainAddText(chain, words[3]), words[3]);
    VireoFrame frame = readPicture(words[1]);
    check(vireoChainRender(chain, &frame, &frame, NULL, NULL), NULL);
    writePicture(&frame, words[2]);
    free(frame.pixels);
    vireoChainClose(chain);
    vireoClose(engine);
    return 0;
}
