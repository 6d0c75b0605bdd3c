// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace openfx::test {
namespace {

namespace fs = std::filesystem;

/// A folder that goes with its owner.
class Folder {
public:
    Folder() {
        char name[] = "/tmp/openfx-XXXXXX";
        if (mkdtemp(name) == nullptr) throw std::runtime_error("there is no temporary folder");
        path_ = name;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(path_); }

    fs::path numbered(const std::string& name, std::size_t number) const {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%03zu", number);
        return path_ / (name + digits + ".pam");
    }
    fs::path operator/(const std::string& name) const { return path_ / name; }

private:
    fs::path path_;
};

void write(const Plain& picture, const fs::path& file) {
    std::ofstream out(file, std::ios::binary);
    const bool isDeep = picture.depth == VireoDepth16;
    out << "P7\nWIDTH " << picture.width << "\nHEIGHT " << picture.height << "\nDEPTH 4\nMAXVAL "
        << (isDeep ? 65535 : 255) << "\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    std::vector<std::uint8_t> bytes = picture.bytes;
    for (std::size_t i = 0; isDeep && i < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Plain readPam(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    int width = 0, height = 0;
    for (std::string line; std::getline(in, line) && line != "ENDHDR";) {
        if (line.starts_with("WIDTH ")) width = std::stoi(line.substr(6));
        if (line.starts_with("HEIGHT ")) height = std::stoi(line.substr(7));
        if (line.starts_with("DEPTH ") && line != "DEPTH 4")
            throw std::runtime_error("no alpha in " + file.string());
    }
    Plain picture(width, height, VireoDepth8, true);
    in.read(reinterpret_cast<char*>(picture.bytes.data()),
            static_cast<std::streamsize>(picture.bytes.size()));
    if (!in || picture.bytes.empty()) throw std::runtime_error("cannot read " + file.string());
    return picture;
}

void run(const std::string& arguments) {
    const std::string command = "'" VIREO_TESTED_PROGRAM "' render --quiet " + arguments;
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
}

}  // namespace

Plain Program::read(const std::string& photograph) {
    const Folder folder;
    const fs::path file = folder / "out.pam";
    run("'" VIREO_SAMPLES "/" + photograph + "' '" + file.string() +
        "' --pixel-format rgba -f 'Solarize:threshold=0'");
    return readPam(file);
}

std::vector<Plain> Program::render(const std::vector<Plain>& clip, const std::string& chain) {
    const Folder folder;
    for (std::size_t i = 0; i < clip.size(); ++i) write(clip[i], folder.numbered("in", i));
    run("'" + (folder / "in%03d.pam").string() + "' '" + (folder / "out%03d.pam").string() +
        "' --pixel-format rgba --clip-length " + std::to_string(clip.size()) + " -f '" + chain + "'");
    std::vector<Plain> rendered;
    for (std::size_t i = 0; i < clip.size(); ++i) rendered.push_back(readPam(folder.numbered("out", i)));
    return rendered;
}

}  // namespace openfx::test
