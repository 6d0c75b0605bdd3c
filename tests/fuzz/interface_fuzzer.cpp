// SPDX-License-Identifier: MIT
// Calls the engine's C interface in any order with what no sane caller would hand over. Whatever that is, a
// call answers with a status and a sentence, changes nothing where it fails, and touches the frames' rows
// alone.
#include "tests/fuzz/guarded_frame.h"
#include "tests/fuzz/require.h"

#include <vireo/vireo.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string>

namespace {

/// An input is a list of calls, each a byte with what the call needs behind it. What lacks is 0.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool isEmpty() const { return rest_.empty(); }

    template <class Value>
    Value take() {
        Value value{};
        const std::size_t size = std::min(sizeof value, rest_.size());
        std::memcpy(&value, rest_.data(), size);
        rest_ = rest_.subspan(size);
        return value;
    }
    std::uint8_t byte() { return take<std::uint8_t>(); }

    /// A length, and so many bytes.
    std::string bytes() {
        const std::size_t size = std::min<std::size_t>(take<std::uint16_t>(), rest_.size());
        const std::string taken(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(size));
        rest_ = rest_.subspan(size);
        return taken;
    }

    /// Small or, where the first byte says so, any.
    template <class Number>
    Number number() {
        const auto small = static_cast<std::int8_t>(byte());
        return small == -128 ? take<Number>() : static_cast<Number>(small);
    }

private:
    std::span<const std::uint8_t> rest_;
};

const VireoEngine* const engine = [] {
    VireoEngine* opened = nullptr;
    REQUIRE(vireoOpen(nullptr, &opened) == VireoDone);
    return opened;
}();

/// A failure has its sentence, and memory is never short here.
bool done(VireoStatus status) {
    REQUIRE(status >= VireoDone && status <= VireoCancelled && status != VireoNoMemory);
    if (status == VireoDone) return true;
    REQUIRE(vireoLastError()->status == status && *vireoLastError()->sentence != '\0');
    return false;
}

/// An enumeration may be any number for C.
template <class Enumeration>
void put(Enumeration& place, std::int32_t number) {
    std::memcpy(&place, &number, sizeof number);
}

/// A frame between guards, or a description of one that has to be refused.
class Frame {
public:
    explicit Frame(Input& input, const VireoFrame* like = nullptr) {
        const std::uint8_t shape = input.byte();
        frame = like != nullptr ? *like : VireoFrame{};
        frame.structSize = sizeof frame;
        if (like == nullptr) {
            frame.width = 1 + input.byte() % (shape & 1 ? 250 : 40);
            frame.height = 1 + input.byte() % (shape & 1 ? 250 : 40);
            const std::int32_t depths[] = {8, 16, 32, 0, 9};
            put(frame.depth, depths[input.byte() % 5]);
        }
        put(frame.layout, std::int32_t{input.byte()} % 12);
        frame.premultiplied = shape & 2;
        const std::int64_t rowBytes = pixelBytes() * frame.width;
        const std::int64_t stride = rowBytes + (shape & 4 ? input.byte() : 0);
        const FrameShape lie{{0, 0, frame.width, frame.height},
                             static_cast<std::int32_t>(shape & 8 ? -stride : stride),
                             pixelBytes(),
                             (shape & 16) != 0};
        guarded.emplace(lie, GuardedFrame::Padding::Guarded, shape, false);
        frame.pixels = guarded->handle()->pixels.get();
        frame.stride = lie.rowBytes;
        whole = frame;
        if (shape & 32) damage(input);
    }

    VireoFrame frame;
    VireoFrame whole;  ///< The frame before it was damaged.
    std::optional<GuardedFrame> guarded;
    bool isDamaged = false;

private:
    std::int64_t pixelBytes() const {
        std::int32_t layout, depth;
        std::memcpy(&layout, &frame.layout, sizeof layout);
        std::memcpy(&depth, &frame.depth, sizeof depth);
        const int samples = layout == VireoGrey ? 1 : layout == VireoBgr || layout == VireoRgb ? 3 : 4;
        return samples * (depth == 16 ? 2 : depth == 32 ? 4 : 1);
    }

    /// One member that no frame of this size can have.
    void damage(Input& input) {
        isDamaged = true;
        const auto any = input.take<std::int32_t>();
        switch (input.byte() % 6) {
            case 0: frame.width = std::min(any, 0); break;
            case 1: frame.width = std::max(any, 200'000'000); break;
            case 2: frame.height = std::min(any, 0); break;
            case 3: frame.structSize = static_cast<std::uint32_t>(any) % 4; break;
            case 4: put(frame.layout, any < 0 || any > VireoGrey ? any : -1); break;
            default: put(frame.depth, any == 0 || any % 8 == 0 ? 7 : any); break;
        }
    }
};

class Session {
public:
    explicit Session(Input& input) : input_(input) {
        REQUIRE(vireoChainNew(engine, &chain_) == VireoDone);
        REQUIRE(vireoStreamNew(chain_, &stream_) == VireoDone);
    }
    ~Session() {
        vireoStreamClose(stream_);
        vireoChainClose(chain_);
    }

    void run() {
        for (int calls = 0; calls < 40 && !input_.isEmpty(); ++calls) {
            switch (const int call = input_.byte() % 16) {
                case 10: readValues(); break;
                case 11: roundTrip(); break;
                case 12: done(vireoChainSetThreads(chain_, input_.number<std::uint32_t>() % 6)); break;
                case 13: done(vireoStreamRestart(stream_)); break;
                case 14:
                case 15: render(); break;
                default: change(call);
            }
        }
    }

private:
    std::optional<std::string> text(VireoSpelling spelling = VireoSpellingFull) const {
        char* given = nullptr;
        if (!done(vireoChainText(chain_, spelling, &given))) return std::nullopt;
        const std::string copy(given);
        vireoFree(given);
        return copy;
    }

    /// What fails changes nothing.
    void change(int call) {
        const auto before = text();
        const std::uint32_t length = vireoChainLength(chain_);
        if (done(changed(call))) return;
        REQUIRE(text() == before && vireoChainLength(chain_) == length);
    }

    VireoStatus changed(int call) {
        if (call == 1) return vireoChainAddFilter(chain_, input_.number<std::uint32_t>());
        if (call == 4) {
            const auto from = input_.number<std::uint32_t>(), to = input_.number<std::uint32_t>();
            return to == 99 ? vireoChainRemove(chain_, from) : vireoChainMove(chain_, from, to);
        }
        if (call < 4) {
            const std::string text = input_.bytes();
            return call == 0   ? vireoChainAddText(chain_, text.c_str())
                   : call == 2 ? vireoChainAddSettings(chain_, text.data(), text.size(), nullptr)
                               : vireoChainAddLevels(chain_, text.data(), text.size(), "levels");
        }
        const auto position = input_.number<std::uint32_t>();
        const auto parameter = input_.number<std::int32_t>();
        if (call == 5) return vireoChainSet(chain_, position, parameter, input_.bytes().c_str());
        if (call == 6) return vireoChainSetValue(chain_, position, parameter, input_.number<std::int64_t>());
        if (call == 9) return vireoChainUnset(chain_, position, parameter);
        if (call == 8) {
            const std::string bytes = input_.bytes();
            return vireoChainSetBytes(chain_, position, bytes.data(), bytes.size());
        }
        VireoKey keys[3];
        const std::uint32_t count = input_.byte() % 4;
        for (VireoKey& key : keys) {
            key = {input_.number<std::int64_t>(), input_.take<double>(), input_.number<std::int64_t>(),
                   VireoLinear};
            put(key.transition, input_.byte() % 4);
        }
        return vireoChainSetKeys(chain_, position, parameter, keys, count);
    }

    VireoTime time() {
        return {sizeof(VireoTime),
                input_.byte() % 3,
                input_.number<std::int64_t>(),
                input_.number<std::int64_t>(),
                input_.take<double>(),
                input_.take<double>()};
    }

    void readValues() {
        const auto position = input_.number<std::uint32_t>();
        const auto parameter = input_.number<std::int32_t>();
        const VireoTime at = time();
        char* text = nullptr;
        void* bytes = nullptr;
        std::size_t length = 0;
        std::int64_t value = 0;
        std::int32_t flag = 0;
        VireoKey keys[2];
        std::uint32_t count = 0;
        if (done(vireoChainGet(chain_, position, parameter, &text))) {
            // What is read can be written, unless it came from bytes that no text may say.
            const VireoStatus status = vireoChainSet(chain_, position, parameter, text);
            REQUIRE(status == VireoDone || status == VireoBadValue);
            vireoFree(text);
        }
        done(vireoChainValue(chain_, position, parameter, &at, &value));
        done(vireoChainKeys(chain_, position, parameter, keys, 2, &count));
        done(vireoChainIsSet(chain_, position, parameter, &flag));
        done(vireoChainCovers(chain_, position, &at, &flag));
        done(vireoChainIsIdentity(chain_, &at, &flag));
        if (done(vireoChainBytes(chain_, position, &at, &bytes, &length))) vireoFree(bytes);
        if (done(vireoChainLevels(chain_, position, &at, &bytes, &length))) vireoFree(bytes);
        const std::string name = input_.bytes();
        done(vireoChainFindParameter(chain_, position, name.c_str(), &flag));
        done(vireoFindFilter(engine, name.c_str(), &count));
    }

    /// Texts and settings read as the chain that they are of.
    void roundTrip() {
        const auto full = text(), compact = text(VireoSpellingCompact);
        REQUIRE(full.has_value() == compact.has_value());
        if (!full) return;
        const auto expectSame = [&](auto&& add) {
            Session again(input_);
            REQUIRE(add(again.chain_) == VireoDone);
            REQUIRE(again.text() == full);
        };
        expectSame([&](VireoChain* chain) { return vireoChainAddText(chain, full->c_str()); });
        expectSame([&](VireoChain* chain) { return vireoChainAddText(chain, compact->c_str()); });
        char* settings = nullptr;
        if (!done(vireoChainSettings(chain_, &settings))) return;
        expectSame([&](VireoChain* chain) {
            return full->empty() ? VireoDone
                                 : vireoChainAddSettings(chain, settings, std::strlen(settings), nullptr);
        });
        vireoFree(settings);
    }

    struct Callers {
        std::uint8_t missing;
        int cancelAfter;
        static std::int32_t earlier(void* user, std::int64_t frame, const VireoFrame* target, VireoTime*) {
            for (int y = 0; y < target->height; ++y)
                static_cast<std::uint8_t*>(target->pixels)[y * target->stride] =
                    static_cast<std::uint8_t>(std::abs(target->stride));
            return frame == static_cast<Callers*>(user)->missing ? 1 : 0;
        }
        static std::int32_t cancelled(void* user) { return static_cast<Callers*>(user)->cancelAfter == 1; }
    };

    void render() {
        if (vireoChainLength(chain_) > 6) return;
        const std::uint8_t how = input_.byte();
        Frame source(input_);
        const VireoTime at = time();
        Callers callers{input_.byte(), input_.byte()};
        const VireoRenderOptions options{sizeof options, how & 1 ? Callers::earlier : nullptr,
                                         Callers::cancelled, &callers};
        std::optional<Frame> own;
        VireoFrame result = source.frame;
        const bool isInPlace = (how & 2) != 0, isEngines = (how & 4) != 0;
        if (!isInPlace) {
            own.emplace(input_, &source.whole);
            result = own->frame;
            if (isEngines) result.pixels = nullptr;
        }
        const VireoTime* const when = how & 16 ? &at : nullptr;
        const bool isDone = done(how & 8 ? vireoStreamRender(stream_, &source.frame, &result, when)
                                         : vireoChainRender(chain_, &source.frame, &result, when, &options));
        if (source.isDamaged || (own && own->isDamaged)) REQUIRE(!isDone);
        if (isEngines && !isInPlace) REQUIRE((result.owned != nullptr) == isDone);
        vireoFrameRelease(&result);
        REQUIRE(source.guarded->kept(isInPlace));
        if (own) REQUIRE(own->guarded->kept(!isEngines));
    }

    Input& input_;
    VireoChain* chain_ = nullptr;
    VireoStream* stream_ = nullptr;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Session(input).run();
    return 0;
}
