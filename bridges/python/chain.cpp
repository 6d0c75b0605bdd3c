// SPDX-License-Identifier: MIT
#include "bridges/python/chain.h"

#include "bridges/python/error.h"

namespace py = pybind11;

namespace vireo::python {

const VireoEngine* engine() {
    static VireoEngine* opened = nullptr;
    if (opened == nullptr) check(vireoOpen(nullptr, &opened));
    return opened;
}

std::string takeText(char* text) {
    const std::unique_ptr<char, decltype(&vireoFree)> owned(text, vireoFree);
    return text;
}

/// Counts what is under way; made and ended with the interpreter's lock held.
class Chain::Rendering {
public:
    explicit Rendering(Chain& chain) : chain_(chain) { ++chain_.renderings_; }
    ~Rendering() { --chain_.renderings_; }
    Rendering(const Rendering&) = delete;
    Rendering& operator=(const Rendering&) = delete;

private:
    Chain& chain_;
};

Chain::Chain() {
    VireoChain* made;
    check(vireoChainNew(engine(), &made));
    handle_.reset(made);
}

VireoChain* Chain::changed() {
    if (renderings_ > 0) throw Failure("a chain cannot be changed while it renders");
    return handle_.get();
}

void Chain::addText(const std::string& text) { check(vireoChainAddText(changed(), text.c_str())); }

void Chain::addPreset(const std::string& name) { check(vireoChainAddPreset(changed(), name.c_str())); }

void Chain::addFile(const std::string& path) { check(vireoChainAddFile(changed(), path.c_str())); }

void Chain::addSettings(const std::string& text) {
    check(vireoChainAddSettings(changed(), text.data(), text.size(), nullptr));
}

void Chain::remove(std::uint32_t position) { check(vireoChainRemove(changed(), position)); }

void Chain::move(std::uint32_t from, std::uint32_t to) { check(vireoChainMove(changed(), from, to)); }

void Chain::setThreads(std::uint32_t threads) { check(vireoChainSetThreads(changed(), threads)); }

std::uint32_t Chain::filter(std::uint32_t position) const {
    std::uint32_t filter;
    check(vireoChainFilter(handle_.get(), position, &filter));
    return filter;
}

std::string Chain::text() const {
    char* text;
    check(vireoChainText(handle_.get(), VireoSpellingFull, &text));
    return takeText(text);
}

std::string Chain::filterText(std::uint32_t position) const {
    char* text;
    check(vireoChainFilterText(handle_.get(), position, VireoSpellingFull, &text));
    return takeText(text);
}

std::string Chain::settings() const {
    char* text;
    check(vireoChainSettings(handle_.get(), &text));
    return takeText(text);
}

std::int32_t Chain::findParameter(std::uint32_t position, const std::string& name) const {
    std::int32_t parameter;
    check(vireoChainFindParameter(handle_.get(), position, name.c_str(), &parameter));
    return parameter;
}

void Chain::set(std::uint32_t position, std::int32_t parameter, const std::string& value) {
    check(vireoChainSet(changed(), position, parameter, value.c_str()));
}

void Chain::unset(std::uint32_t position, std::int32_t parameter) {
    check(vireoChainUnset(changed(), position, parameter));
}

std::string Chain::get(std::uint32_t position, std::int32_t parameter) const {
    char* value;
    check(vireoChainGet(handle_.get(), position, parameter, &value));
    return takeText(value);
}

bool Chain::isSet(std::uint32_t position, std::int32_t parameter) const {
    std::int32_t isSet;
    check(vireoChainIsSet(handle_.get(), position, parameter, &isSet));
    return isSet != 0;
}

std::int64_t Chain::valueAt(std::uint32_t position, std::int32_t parameter, const VireoTime& time) const {
    std::int64_t value;
    check(vireoChainValue(handle_.get(), position, parameter, &time, &value));
    return value;
}

VireoNeeds Chain::needs() const {
    VireoNeeds needs{};
    needs.structSize = sizeof needs;
    check(vireoChainNeeds(handle_.get(), &needs));
    return needs;
}

void Chain::render(const py::buffer& source, const py::buffer& result, const PixelOrder& order,
                   const VireoTime& time, const py::object& earlier) {
    const ArrayFrame from(source, false, order), to(result, true, order);
    EarlierFrames earlierFrames(earlier);
    const VireoRenderOptions options = earlierFrames.options();
    VireoFrame written = to.frame();
    VireoStatus status;
    {
        const Rendering rendering(*this);
        const py::gil_scoped_release released;
        status = vireoChainRender(handle_.get(), &from.frame(), &written, &time, &options);
    }
    earlierFrames.rethrow();
    check(status);
}

Stream::Stream(Chain& chain) : chain_(chain) {
    VireoStream* made;
    check(vireoStreamNew(chain.handle_.get(), &made));
    handle_.reset(made);
}

void Stream::render(const py::buffer& source, const py::buffer& result, const PixelOrder& order,
                    const VireoTime& time) {
    if (isRendering_) throw Failure("a stream renders one frame at a time");
    const ArrayFrame from(source, false, order), to(result, true, order);
    VireoFrame written = to.frame();
    VireoStatus status;
    isRendering_ = true;
    {
        const Chain::Rendering rendering(chain_);
        const py::gil_scoped_release released;
        status = vireoStreamRender(handle_.get(), &from.frame(), &written, &time);
    }
    isRendering_ = false;
    check(status);
}

}  // namespace vireo::python
