// Prints a digest of everything the run-length codec makes of the benchmarks' inputs and of
// any files given: the code of each picture, the picture decoded from each code, and the
// decoder's log. A faster codec must not change a byte of it; run this with the old library
// and the new one (LD_LIBRARY_PATH) and compare the outputs.
//
// Usage: codec-digest [FILE...]     e.g. codec-digest fuzz/corpus/*/*
//
// A file is taken as it is and tiled to a whole picture, each both as a picture to encode
// and as a code to decode.

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "config.h"
#include "handwriting.h"
#include "inputs.h"
#include "notewriter.h"

namespace {

using Bytes = std::vector<uint8_t>;
using notewriter::kPictureSize;

// FNV-1a, 64 bits: enough to tell two outputs apart.
uint64_t digest(const uint8_t* p, std::size_t n) {
    uint64_t h = 0xcbf29ce484222325ull;
    for (std::size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 0x100000001b3ull;
    return h;
}

void encode(const std::string& name, Bytes picture) {
    std::vector<unsigned char> code(2 * picture.size() + 1);
    unsigned long length = 0;
    const bool ok = compresseDataByRLE(reinterpret_cast<char*>(picture.data()), picture.size(), code.data(), length);
    std::printf("%s encode %d %lu %016llx\n", name.c_str(), ok, length,
                static_cast<unsigned long long>(digest(code.data(), length)));
}

// Into a picture that holds a different byte at every place, so skipped pixels count too.
// The code keeps the spare zero byte behind it that the layer module gives it.
void decode(const std::string& name, Bytes code) {
    Bytes picture(kPictureSize);
    for (std::size_t k = 0; k < picture.size(); ++k) picture[k] = uint8_t(k * 7 + 3);
    const std::size_t length = code.size();
    code.push_back(0);
    std::printf("%s decode ", name.c_str());
    const bool ok = uncompresseDataByRLE(reinterpret_cast<char*>(picture.data()), picture.size(),
                                         reinterpret_cast<char*>(code.data()), length);
    std::printf(" %d %016llx\n", ok, static_cast<unsigned long long>(digest(picture.data(), picture.size())));
}

Bytes tiled(const Bytes& bytes) {
    Bytes out(kPictureSize);
    for (std::size_t k = 0; k < out.size() && !bytes.empty(); ++k) out[k] = bytes[k % bytes.size()];
    return out;
}

void both(const std::string& name, const Bytes& bytes) {
    encode(name, bytes);
    decode(name, bytes);
}

}  // namespace

int main(int argc, char** argv) {
    for (int kind = 0; kind < bench::kPictureKinds; ++kind) {
        const auto picture = static_cast<bench::Picture>(kind);
        const std::string name = bench::pictureName(picture);
        encode(name, bench::pixels(picture));
        const std::vector<char>& code = bench::code(picture);
        decode(name, Bytes(code.begin(), code.end() - 1));
    }
    for (int number = 1; number <= bench::kHandwrittenPages; ++number)
        for (const notewriter::Layer& layer : handwriting::fullPage(number).layers) {
            const std::string name = "page" + std::to_string(number) + "/" + layer.name;
            encode(name, layer.pixels);
            const std::string code = notewriter::encodePicture(layer.pixels);
            decode(name, Bytes(code.begin(), code.end()));
        }
    for (int i = 1; i < argc; ++i) {
        std::ifstream in(argv[i], std::ios::binary);
        const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!in.good() && !in.eof()) {
            std::fprintf(stderr, "codec-digest: %s: cannot read\n", argv[i]);
            return 1;
        }
        both(argv[i], bytes);
        both(std::string(argv[i]) + "/tiled", tiled(bytes));
    }
    return 0;
}
