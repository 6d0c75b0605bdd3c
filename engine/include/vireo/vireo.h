// SPDX-License-Identifier: MIT
// The engine: chains of the Vireo filters, by name, over frames of the caller's.
//
// Texts are UTF-8 with a zero behind them. What fails answers with a status, and vireoLastError() tells the
// one sentence; nothing is thrown, printed or ended. Handles may be used from any thread, and one chain
// renders on any number of threads at once. Changing a handle while another thread uses it is the caller's
// fault, and so are closed handles.
//
// Structs that begin with their own size can grow: the caller sets structSize to sizeof before a call reads
// or fills one, and members beyond it have their defaults or are left alone.
#ifndef VIREO_VIREO_H
#define VIREO_VIREO_H

#include <stddef.h>
#include <stdint.h>

#if defined(VIREO_ENGINE_STATIC)
#define VIREO_API
#elif defined(_WIN32) && defined(VIREO_ENGINE_BUILD)
#define VIREO_API __declspec(dllexport)
#elif defined(_WIN32)
#define VIREO_API __declspec(dllimport)
#else
#define VIREO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct VireoEngine VireoEngine;  ///< Module, filters and presets.
typedef struct VireoChain VireoChain;    ///< Filters one after another, with their settings.
typedef struct VireoStream VireoStream;  ///< Frames that go through a chain in order.

typedef enum VireoStatus {
    VireoDone = 0,
    VireoFailed = 1,            ///< What the sentence says.
    VireoUsage = 2,             ///< An argument makes no sense: null, an index or a size outside its range.
    VireoNoMemory = 3,          ///< Memory is short.
    VireoNoModule = 4,          ///< There is no module, or it cannot be loaded.
    VireoUnknownFilter = 5,     ///< No filter, or more than one, goes by a name.
    VireoUnknownParameter = 6,  ///< The same of a filter's parameter.
    VireoBadValue = 7,          ///< A parameter does not take a value.
    VireoBadText = 8,           ///< A text has not the form that it needs.
    VireoBadSettings = 9,       ///< A settings file or a Levels file is damaged.
    VireoUnknownPreset = 10,    ///< No preset, or more than one, goes by a name.
    VireoTooLarge = 11,         ///< A filter does not take frames of this size.
    VireoUnsupported = 12,      ///< The chain does not render frames of this depth.
    VireoNoFrame = 13,          ///< An earlier frame that a filter needs is not there.
    VireoCancelled = 14         ///< The caller asked for an end.
} VireoStatus;

/// Why the last call of this thread that failed did.
typedef struct VireoError {
    VireoStatus status;
    int64_t offset;         ///< Where in the text that was given, in bytes from its begin; -1 for nowhere.
    const char* sentence;   ///< Without a full stop, as the command line prints it.
    const char* filter;     ///< What the sentence is about, to say it in other words: empty where it is not
    const char* parameter;  ///< about one.
    const char* value;
} VireoError;

/// Never null. Valid until the thread's next call of the engine.
VIREO_API const VireoError* vireoLastError(void);

VIREO_API const char* vireoVersion(void);         ///< "1.0.0".
VIREO_API const char* vireoCommit(void);          ///< What the engine was built from; "unknown".
VIREO_API const char* vireoInstructionSet(void);  ///< Whose kernels run: "avx2".

/// Frees what the engine handed out to keep: texts and bytes. Null does nothing.
VIREO_API void vireoFree(void* memory);

// The engine and its filters.

typedef struct VireoOpenOptions {
    uint32_t structSize;
    const char* module;    ///< The module's path. Null: what VIREO_MODULE names, else the one beside this
                           ///< library or in the folder that an installation has for it.
    const char* language;  ///< Of names: "en", "fr", "de", "ja", "es", "it" or "ko". Null: "en".
} VireoOpenOptions;

/// Opens the engine. `options` may be null.
VIREO_API VireoStatus vireoOpen(const VireoOpenOptions* options, VireoEngine** engine);

/// Chains and streams that are still there keep what they need. Null does nothing.
VIREO_API void vireoClose(VireoEngine* engine);

/// Another language of names. Texts that were handed out before are no longer valid.
VIREO_API VireoStatus vireoSetLanguage(VireoEngine* engine, const char* language);

/// The text of a key such as "$$$/Page/Save=Save" in the engine's language: the catalogue's, else what
/// follows "=". Freed by vireoFree().
VIREO_API VireoStatus vireoTranslate(const VireoEngine* engine, const char* key, char** text);

typedef struct VireoFilter {
    uint32_t structSize;
    uint32_t id;
    const char* name;  ///< In the engine's language, as the next ones with "english" are not.
    const char* englishName;
    const char* category;
    const char* englishCategory;
    const char* key;        ///< As links name it: "BlackAndWhite".
    const char* matchName;  ///< As projects name it.
    const char* fileName;   ///< As files name it: "black_and_white".
    uint32_t parameterCount;
    int32_t readsTime;       ///< Whether its picture changes with the frame's number.
    uint32_t earlierFrames;  ///< How many frames back it looks.
    uint32_t depths;         ///< The depths that it renders, one VireoDepth beside the other.
    int32_t maximumWidth;    ///< The largest frames that it takes, INT32_MAX where any.
    int32_t maximumHeight;
    int32_t maximumRowBytes;
    int32_t countsPixels;  ///< Whether a picture made smaller is not rendered as the large one is, whatever
                           ///< becomes of the parameters that count pixels.
} VireoFilter;

VIREO_API uint32_t vireoFilterCount(const VireoEngine* engine);

/// Texts are the engine's and valid until it is closed or its language changes.
VIREO_API VireoStatus vireoDescribeFilter(const VireoEngine* engine, uint32_t filter,
                                          VireoFilter* description);

/// The filter that goes by a display name, key, match name or id, or by the unambiguous beginning of one.
VIREO_API VireoStatus vireoFindFilter(const VireoEngine* engine, const char* name, uint32_t* filter);

typedef enum VireoKind { VireoNumber = 0, VireoBoolean = 1, VireoColor = 2 } VireoKind;

typedef struct VireoParameter {
    uint32_t structSize;
    VireoKind kind;
    const char* name;  ///< In the engine's language.
    const char* englishName;
    const char* unit;  ///< Of the display range: "%"; empty where there is none.
    double minimum;    ///< What values may be, both ends included.
    double maximum;
    double displayMinimum;  ///< The same as people read it.
    double displayMaximum;
    int64_t initial;       ///< Of a fresh filter. Colours are 0xRRGGBB here and everywhere.
    int32_t takesPercent;  ///< Whether "40%" is a value.
    uint32_t choiceCount;  ///< Words that stand for the values from `minimum` on; 0: none.
    uint32_t size;         ///< Bytes in the settings handle.
    const char* label;     ///< As people read it beside a control, in the engine's language.
    int32_t inPixels;      ///< Whether values count pixels, so that they go with a picture made smaller.
} VireoParameter;

VIREO_API VireoStatus vireoDescribeParameter(const VireoEngine* engine, uint32_t filter, uint32_t parameter,
                                             VireoParameter* description);

/// The word of a choice, in the engine's language. Valid as descriptions are.
VIREO_API VireoStatus vireoDescribeChoice(const VireoEngine* engine, uint32_t filter, uint32_t parameter,
                                          uint32_t choice, const char** word);

typedef struct VireoPreset {
    uint32_t structSize;
    char* name;
    char* description;  ///< Empty where the file says nothing.
    char* file;
} VireoPreset;

/// How many presets there are now, the user's own and those that came with the engine.
VIREO_API VireoStatus vireoPresetCount(const VireoEngine* engine, uint32_t* count);

/// Texts are freed by vireoFree(), each.
VIREO_API VireoStatus vireoDescribePreset(const VireoEngine* engine, uint32_t preset,
                                          VireoPreset* description);

// Chains. What adds to one adds whole or, where it fails, leaves it as it was.

VIREO_API VireoStatus vireoChainNew(const VireoEngine* engine, VireoChain** chain);
VIREO_API VireoStatus vireoChainCopy(const VireoChain* chain, VireoChain** copy);

/// Ends its threads. Streams of the chain are closed before. Null does nothing.
VIREO_API void vireoChainClose(VireoChain* chain);

/// Adds the filters of a text such as the command line's -f takes; several have ";" or line ends between
/// them.
VIREO_API VireoStatus vireoChainAddText(VireoChain* chain, const char* text);

/// Adds a filter as it is when fresh.
VIREO_API VireoStatus vireoChainAddFilter(VireoChain* chain, uint32_t filter);

VIREO_API VireoStatus vireoChainAddPreset(VireoChain* chain, const char* name);

/// Adds a settings file's text of `length` bytes. `shownName` is what sentences call it; null: "settings".
VIREO_API VireoStatus vireoChainAddSettings(VireoChain* chain, const char* text, size_t length,
                                            const char* shownName);

/// Adds Levels as a Levels file of `length` bytes sets it.
VIREO_API VireoStatus vireoChainAddLevels(VireoChain* chain, const void* content, size_t length,
                                          const char* shownName);

/// Adds what a settings file or a Levels file describes.
VIREO_API VireoStatus vireoChainAddFile(VireoChain* chain, const char* path);

VIREO_API uint32_t vireoChainLength(const VireoChain* chain);

/// The engine's index of the filter at a position.
VIREO_API VireoStatus vireoChainFilter(const VireoChain* chain, uint32_t position, uint32_t* filter);

VIREO_API VireoStatus vireoChainRemove(VireoChain* chain, uint32_t position);
VIREO_API VireoStatus vireoChainMove(VireoChain* chain, uint32_t from, uint32_t to);

typedef enum VireoSpelling {
    VireoSpellingFull = 0,    ///< "Black & White:mix=50%".
    VireoSpellingCompact = 1  ///< Without what addresses would escape: "BlackAndWhite:mix=50".
} VireoSpelling;

/// What vireoChainAddText() reads as this chain, filters apart by "; ". Freed by vireoFree().
VIREO_API VireoStatus vireoChainText(const VireoChain* chain, VireoSpelling spelling, char** text);

/// The same of one filter.
VIREO_API VireoStatus vireoChainFilterText(const VireoChain* chain, uint32_t position, VireoSpelling spelling,
                                           char** text);

/// The chain as a settings file. One that was read and not changed since comes back byte for byte. Freed by
/// vireoFree().
VIREO_API VireoStatus vireoChainSettings(const VireoChain* chain, char** text);

// Values. A parameter goes by its index, and three words that every filter has by these numbers.

enum { VireoFrom = -1, VireoTo = -2, VireoMix = -3 };

/// A moment of the clip.
typedef struct VireoTime {
    uint32_t structSize;
    int32_t interlacing;  ///< 0 progressive, 1 top field first, 2 bottom field first.
    int64_t frame;        ///< From 0.
    int64_t frames;       ///< Of the whole clip; 0 where unknown.
    double rate;          ///< Frames a second, at least 0.000001; 0: 25.
    double seconds;       ///< From the first frame, up to 1e15; negative: frame / rate.
} VireoTime;

/// What goes by a name or by the unambiguous beginning of one: an index, or one of the three words.
VIREO_API VireoStatus vireoChainFindParameter(const VireoChain* chain, uint32_t position, const char* name,
                                              int32_t* parameter);

/// Gives a parameter its value as -f takes it, key frames and per cents too.
VIREO_API VireoStatus vireoChainSet(VireoChain* chain, uint32_t position, int32_t parameter,
                                    const char* value);

/// The value as -f takes it, where none was given the one that holds then; empty for from and to. Freed by
/// vireoFree().
VIREO_API VireoStatus vireoChainGet(const VireoChain* chain, uint32_t position, int32_t parameter,
                                    char** value);

VIREO_API VireoStatus vireoChainUnset(VireoChain* chain, uint32_t position, int32_t parameter);
VIREO_API VireoStatus vireoChainIsSet(const VireoChain* chain, uint32_t position, int32_t parameter,
                                      int32_t* isSet);

/// A constant value, in stored units.
VIREO_API VireoStatus vireoChainSetValue(VireoChain* chain, uint32_t position, int32_t parameter,
                                         int64_t value);

/// The value at a moment; `time` may be null for the first.
VIREO_API VireoStatus vireoChainValue(const VireoChain* chain, uint32_t position, int32_t parameter,
                                      const VireoTime* time, int64_t* value);

/// Whether the filter works at a moment, as its from and to say.
VIREO_API VireoStatus vireoChainCovers(const VireoChain* chain, uint32_t position, const VireoTime* time,
                                       int32_t* covers);

typedef enum VireoTransition {
    VireoLinear = 0,
    VireoHold = 1,
    VireoSmooth = 2  ///< Ease in and out.
} VireoTransition;

typedef struct VireoKey {
    int64_t frame;   ///< Where it was given as a frame, from 0; else negative.
    double seconds;  ///< Where it was not: from the first frame.
    int64_t value;
    VireoTransition transition;  ///< To the next key.
} VireoKey;

/// Writes up to `capacity` keys and tells how many there are; 0 for a constant.
VIREO_API VireoStatus vireoChainKeys(const VireoChain* chain, uint32_t position, int32_t parameter,
                                     VireoKey* keys, uint32_t capacity, uint32_t* count);

/// Replaces a parameter's value by key frames, at least one, in order of time.
VIREO_API VireoStatus vireoChainSetKeys(VireoChain* chain, uint32_t position, int32_t parameter,
                                        const VireoKey* keys, uint32_t count);

/// Takes the settings handle's bytes: all of them, or those of the parameters.
VIREO_API VireoStatus vireoChainSetBytes(VireoChain* chain, uint32_t position, const void* bytes,
                                         size_t length);

/// The settings handle at a moment; `time` may be null for the first. Freed by vireoFree().
VIREO_API VireoStatus vireoChainBytes(const VireoChain* chain, uint32_t position, const VireoTime* time,
                                      void** bytes, size_t* length);

/// The Levels file of a Levels at a moment. Freed by vireoFree().
VIREO_API VireoStatus vireoChainLevels(const VireoChain* chain, uint32_t position, const VireoTime* time,
                                       void** content, size_t* length);

// Frames.

typedef enum VireoLayout {
    VireoBgra = 0,  ///< The order in memory, whatever the machine's.
    VireoRgba = 1,
    VireoArgb = 2,
    VireoAbgr = 3,
    VireoBgrx = 4,  ///< x means nothing: read as opaque, written as full.
    VireoRgbx = 5,
    VireoXrgb = 6,
    VireoXbgr = 7,
    VireoBgr = 8,
    VireoRgb = 9,
    VireoGrey = 10  ///< Colours become their BT.601 luma.
} VireoLayout;

typedef enum VireoDepth {
    VireoDepth8 = 8,      ///< Bytes, 0 to 255.
    VireoDepth16 = 16,    ///< Words of the machine, 0 to 65535.
    VireoDepthFloat = 32  ///< 0 to 1.
} VireoDepth;

typedef struct VireoFrame {
    uint32_t structSize;
    int32_t width;  ///< Pixels.
    int32_t height;
    VireoLayout layout;
    VireoDepth depth;       ///< 0: 8 bits.
    int32_t premultiplied;  ///< Whether colours are multiplied by alpha.
    void* pixels;           ///< The first pixel of the picture's top row.
    int64_t stride;         ///< Bytes from a row to the one below it; negative for rows from the bottom up.
    void* owned;            ///< The engine's, null for pixels of the caller's.
} VireoFrame;

/// Frees the pixels that the engine gave to a frame; does nothing for a caller's.
VIREO_API void vireoFrameRelease(VireoFrame* frame);

// Rendering.

typedef struct VireoNeeds {
    uint32_t structSize;
    uint32_t earlierFrames;       ///< How many frames back the chain asks for at most, in interlaced clips.
    int32_t readsTime;            ///< Whether a frame's picture hangs on its place in the clip.
    uint32_t depths;              ///< The depths that frames may have, one VireoDepth beside the other.
    int32_t takesRowsFromTheTop;  ///< Whether BGRA frames from the top down are rendered without a copy too.
} VireoNeeds;

VIREO_API VireoStatus vireoChainNeeds(const VireoChain* chain, VireoNeeds* needs);

/// VireoDone where frames of this size and depth can be rendered, else why not; pixels do not matter.
VIREO_API VireoStatus vireoChainAccepts(const VireoChain* chain, const VireoFrame* frame,
                                        int32_t interlacing);

/// Whether the chain leaves every picture of a moment as it is, as its settings tell.
VIREO_API VireoStatus vireoChainIsIdentity(const VireoChain* chain, const VireoTime* time,
                                           int32_t* isIdentity);

/// How many threads work on one frame, the caller's included; 1 at first. The chain keeps them.
VIREO_API VireoStatus vireoChainSetThreads(VireoChain* chain, uint32_t threads);

/// Writes the chain's input at an earlier frame into `target`, which has the source's size, layout and depth.
/// `time` holds that frame's number, and its place by the clip's rate: where the frame stands elsewhere, its
/// seconds are set. 0 when it is there. Before the clip's begin the first frame is asked for.
/// Called on any of the chain's threads, one call at a time for a frame.
typedef int32_t VireoEarlierFrame(void* user, int64_t frame, const VireoFrame* target, VireoTime* time);

typedef struct VireoRenderOptions {
    uint32_t structSize;
    VireoEarlierFrame* earlierFrame;     ///< Null: filters that look back see the source itself.
    int32_t (*isCancelled)(void* user);  ///< Asked between filters and parts of a frame, on any of the
                                         ///< chain's threads; may be null.
    void* user;
    int32_t reducesDepth;  ///< Whether deeper frames than the chain renders are brought to 8 bits with an
                           ///< ordered dither, and the result back.
} VireoRenderOptions;

/// Renders a frame. `result` has the source's size; layout, depth and row order are its own, with the depth
/// the source's. Where its pixels are null the engine allocates them, to be freed by vireoFrameRelease(). It
/// may be the source's own memory. `time` may be null for the first frame of a clip, `options` as well. An
/// empty chain copies. Where it fails, pixels of a result of the caller's may be anything.
VIREO_API VireoStatus vireoChainRender(const VireoChain* chain, const VireoFrame* source, VireoFrame* result,
                                       const VireoTime* time, const VireoRenderOptions* options);

/// A stream of a chain: it keeps the earlier frames that the chain needs. The chain outlives it and may be
/// changed between frames.
VIREO_API VireoStatus vireoStreamNew(const VireoChain* chain, VireoStream** stream);
VIREO_API void vireoStreamClose(VireoStream* stream);

/// Renders the next frame, as vireoChainRender() does. Without `time` frames are counted from 0. Frames of
/// another size or a number that does not follow begin the history anew, and so does vireoStreamRestart(),
/// after which counting goes on from 0. One thread at a time.
VIREO_API VireoStatus vireoStreamRender(VireoStream* stream, const VireoFrame* source, VireoFrame* result,
                                        const VireoTime* time);
VIREO_API VireoStatus vireoStreamRestart(VireoStream* stream);

/// The next frame is the one of this number, and those before it that have not come are lost: the history
/// goes on, and the nearest frames before stand for them.
VIREO_API VireoStatus vireoStreamSkip(VireoStream* stream, int64_t frame);

#ifdef __cplusplus
}
#endif

#endif
