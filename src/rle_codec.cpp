// Layer bitmaps: the run-length code, its decoder and encoder, and the colour tables.

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "config.h"
#include "log.h"
#include "picture.h"

// The three public tables, made from the pixel values (picture.h) when the library is
// compiled. An array's initialiser lists its elements one by one: these macros list f(0) to
// f(255).
#define LIBNOTE_EACH_OF_16(f, row)                                                                   \
    f(row + 0), f(row + 1), f(row + 2), f(row + 3), f(row + 4), f(row + 5), f(row + 6), f(row + 7), \
    f(row + 8), f(row + 9), f(row + 10), f(row + 11), f(row + 12), f(row + 13), f(row + 14), f(row + 15)
#define LIBNOTE_EACH_BYTE(f)                                                                                \
    LIBNOTE_EACH_OF_16(f, 0x00), LIBNOTE_EACH_OF_16(f, 0x10), LIBNOTE_EACH_OF_16(f, 0x20),                \
    LIBNOTE_EACH_OF_16(f, 0x30), LIBNOTE_EACH_OF_16(f, 0x40), LIBNOTE_EACH_OF_16(f, 0x50),                \
    LIBNOTE_EACH_OF_16(f, 0x60), LIBNOTE_EACH_OF_16(f, 0x70), LIBNOTE_EACH_OF_16(f, 0x80),                \
    LIBNOTE_EACH_OF_16(f, 0x90), LIBNOTE_EACH_OF_16(f, 0xA0), LIBNOTE_EACH_OF_16(f, 0xB0),                \
    LIBNOTE_EACH_OF_16(f, 0xC0), LIBNOTE_EACH_OF_16(f, 0xD0), LIBNOTE_EACH_OF_16(f, 0xE0),                \
    LIBNOTE_EACH_OF_16(f, 0xF0)
#define LIBNOTE_VALUE_OF_CODE(b) int{noteformat::valueOfCode(static_cast<uint8_t>(b))}
#define LIBNOTE_CODE_OF_VALUE(b) noteformat::codeOfValue(static_cast<uint8_t>(b))
#define LIBNOTE_COLOUR_OF_VALUE(b) static_cast<int>(noteformat::colourOfValue(static_cast<uint8_t>(b)))

// Colour code -> pixel value; transparent (a skipped run) for every code the encoder never
// writes.
const int UNCOMPRESS_INDEX[256] = {LIBNOTE_EACH_BYTE(LIBNOTE_VALUE_OF_CODE)};
// Pixel value -> colour code; bytes that are not pixel values code as kNoCode, a skip.
const unsigned char COMPRESS_INDEX[256] = {LIBNOTE_EACH_BYTE(LIBNOTE_CODE_OF_VALUE)};
// Pixel value -> colour 0xAARRGGBB, stored as int.
const int NOTE_COLOR_CONVERT_INDEX[256] = {LIBNOTE_EACH_BYTE(LIBNOTE_COLOUR_OF_VALUE)};

#undef LIBNOTE_COLOUR_OF_VALUE
#undef LIBNOTE_CODE_OF_VALUE
#undef LIBNOTE_VALUE_OF_CODE
#undef LIBNOTE_EACH_BYTE
#undef LIBNOTE_EACH_OF_16

namespace {

// The run length of each length byte: 1 to 128 pixels, or multiples of 128 up to 16384.
// A table, so that the decoder takes it without a branch.
constexpr std::array<uint16_t, 256> kRunLengths = [] {
    std::array<uint16_t, 256> lengths{};
    for (unsigned b = 0; b < 256; ++b) lengths[b] = static_cast<uint16_t>(b < 0x80 ? b + 1 : ((b & 0x7F) + 1) * 128);
    return lengths;
}();

inline unsigned long runLength(unsigned char b) { return kRunLengths[b]; }

inline void store8(char* p, uint64_t pattern) { std::memcpy(p, &pattern, 8); }
inline void store4(char* p, uint32_t pattern) { std::memcpy(p, &pattern, 4); }
inline void store2(char* p, uint16_t pattern) { std::memcpy(p, &pattern, 2); }

// Fills n bytes with value in one block fill. Handwriting is mostly short runs, for which a
// call to memset costs more than the fill itself, so those are written with stores that
// overlap inside the run and never touch a byte outside it.
inline void fillRun(char* p, unsigned char value, unsigned long n) {
    const uint64_t pattern = 0x0101010101010101ull * value;
    if (n >= 32) {
        std::memset(p, value, n);
    } else if (n >= 16) {
        store8(p, pattern);
        store8(p + 8, pattern);
        store8(p + n - 16, pattern);
        store8(p + n - 8, pattern);
    } else if (n >= 8) {
        store8(p, pattern);
        store8(p + n - 8, pattern);
    } else if (n >= 4) {
        store4(p, static_cast<uint32_t>(pattern));
        store4(p + n - 4, static_cast<uint32_t>(pattern));
    } else if (n >= 2) {
        store2(p, static_cast<uint16_t>(pattern));
        store2(p + n - 2, static_cast<uint16_t>(pattern));
    } else {
        *p = static_cast<char>(value);
    }
}

constexpr unsigned char kSkipped = noteformat::kTransparent;

// The pixel value of a colour code, kSkipped for a run that is not written. Codes 0x80 and
// above, taken as signed, fall outside the table; like every code the encoder never writes,
// they are skipped pixels.
inline unsigned char pixelOf(unsigned char code) {
    return code >= 0x80 ? kSkipped : static_cast<unsigned char>(UNCOMPRESS_INDEX[code]);
}

// Each code's pixel value, and 1 where its runs are written, 0 where they are skipped; and
// the codes that are written, for the vector path below, which compares with each of eight
// (the places left over hold 0x100, which no code byte equals).
struct CodeTable {
    static constexpr unsigned kMostCompared = 8;
    unsigned char pixel[256];
    unsigned char written[256];
    uint16_t writtenCodes[kMostCompared] = {0x100, 0x100, 0x100, 0x100, 0x100, 0x100, 0x100, 0x100};
    unsigned writtenCount = 0;
    CodeTable() {
        for (unsigned code = 0; code < 256; ++code) {
            pixel[code] = pixelOf(static_cast<unsigned char>(code));
            written[code] = pixel[code] == kSkipped ? 0 : 1;
            if (written[code] && writtenCount++ < kMostCompared) writtenCodes[writtenCount - 1] = static_cast<uint16_t>(code);
        }
    }
};

constexpr unsigned kPairsAtOnce = 64;  // one bit each in a 64-bit word
constexpr unsigned long kSpan = 16;    // what a short run is filled with, and kept behind it

// Sums up the runs of a group of 64 pairs, starting at `total`: starts[k] is where pair k's
// run begins, starts[64] where the group ends. Returns the mask of the runs that are written.
// The sums fit in 32 bits: a group begins within the picture and holds at most 64 x 16384
// pixels.
uint64_t sumGroup(const CodeTable& codes, const unsigned char* pairs, uint32_t total, uint32_t* starts) {
    uint64_t written = 0;
    for (unsigned k = 0; k < kPairsAtOnce; ++k) {
        starts[k] = total;
        written |= uint64_t{codes.written[pairs[2 * k]]} << k;
        total += static_cast<uint32_t>(runLength(pairs[2 * k + 1]));
    }
    starts[kPairsAtOnce] = total;
    return written;
}

#if defined(__SSE2__)
// sumGroup eight pairs at a time, for a table with at most eight written codes. The length
// byte's rule (kRunLengths) is worked out in 16-bit lanes, and the sums in 32-bit ones.
uint64_t sumGroupSse2(const CodeTable& codes, const unsigned char* pairs, uint32_t total, uint32_t* starts) {
    const __m128i one = _mm_set1_epi16(1), low7 = _mm_set1_epi16(0x7F), lowByte = _mm_set1_epi16(0xFF);
    const __m128i zero = _mm_setzero_si128();
    __m128i compared[CodeTable::kMostCompared];
    for (unsigned c = 0; c < CodeTable::kMostCompared; ++c) compared[c] = _mm_set1_epi16(static_cast<short>(codes.writtenCodes[c]));
    uint64_t written = 0;
    starts[0] = total;
    for (unsigned j = 0; j < kPairsAtOnce / 8; ++j) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pairs + 16 * j));
        const __m128i lengthByte = _mm_srli_epi16(eight, 8), code = _mm_and_si128(eight, lowByte);
        const __m128i long_ = _mm_cmpgt_epi16(lengthByte, low7);
        const __m128i n = _mm_or_si128(
            _mm_and_si128(long_, _mm_slli_epi16(_mm_add_epi16(_mm_and_si128(lengthByte, low7), one), 7)),
            _mm_andnot_si128(long_, _mm_add_epi16(lengthByte, one)));
        __m128i isWritten = zero;
        for (const __m128i& c : compared) isWritten = _mm_or_si128(isWritten, _mm_cmpeq_epi16(code, c));
        written |= uint64_t{static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(isWritten, zero)))} << (8 * j);
        // Running sums of the eight lengths, from the group's total so far: the ends of the
        // eight runs, which are the starts of the next eight.
        __m128i low = _mm_unpacklo_epi16(n, zero), high = _mm_unpackhi_epi16(n, zero);
        low = _mm_add_epi32(low, _mm_slli_si128(low, 4));
        low = _mm_add_epi32(low, _mm_slli_si128(low, 8));
        high = _mm_add_epi32(high, _mm_slli_si128(high, 4));
        high = _mm_add_epi32(high, _mm_slli_si128(high, 8));
        low = _mm_add_epi32(low, _mm_set1_epi32(static_cast<int>(total)));
        high = _mm_add_epi32(high, _mm_shuffle_epi32(low, 0xFF));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(starts + 8 * j + 1), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(starts + 8 * j + 5), high);
        total = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(high, 0xFF)));
    }
    return written;
}
#endif

// The runs of a group, by the vector path where the host has it and the table allows.
uint64_t sumRuns(const CodeTable& codes, const unsigned char* pairs, uint32_t total, uint32_t* starts) {
#if defined(__SSE2__)
    if (codes.writtenCount <= CodeTable::kMostCompared) return sumGroupSse2(codes, pairs, total, starts);
#endif
    return sumGroup(codes, pairs, total, starts);
}

// Decodes whole groups of 64 pairs while a group's runs, and 16 bytes behind them, lie in
// the picture; i and total then tell the careful loop where to go on.
//
// Handwriting alternates short ink runs with skipped pixels (each transparent pixel the
// encoder meets byte by byte is a pair of its own) too irregularly for a branch per pair,
// or per run length, to be predicted. So a group's runs are first summed up without a
// branch, noting which are written; then each written run is filled with 16 bytes of its
// value. What that puts past a short run's end belongs to skipped pixels or to later runs,
// so the 16 bytes behind each run, read before the group wrote anything, are put back right
// after it: every byte before a run's end is then final, every byte from there on as it was.
//
// Its loops are short and run millions of times a page: where they fall against the
// processor's fetch blocks decided up to 40 % of the decoder's time, moving with any change
// elsewhere in the library. Starting the function on a cache line keeps their place fixed.
#if defined(__GNUC__)
__attribute__((aligned(64)))
#endif
void decodeGroups(char* dest, const unsigned char* src, unsigned long srcLen, unsigned long& i, unsigned long& total) {
    static const CodeTable codes;
    uint32_t starts[kPairsAtOnce + 1];
    unsigned char behind[kPairsAtOnce][kSpan];
    for (; i + 2 * kPairsAtOnce <= srcLen; i += 2 * kPairsAtOnce) {
        const unsigned char* pairs = src + i;
        const uint64_t written = sumRuns(codes, pairs, static_cast<uint32_t>(total), starts);
        const unsigned long end = starts[kPairsAtOnce];
        if (end + kSpan > noteformat::kPictureSize) return;

        unsigned r = 0;
        for (uint64_t w = written; w != 0; w &= w - 1)
            std::memcpy(behind[r++], dest + starts[__builtin_ctzll(w) + 1], kSpan);
        r = 0;
        for (uint64_t w = written; w != 0; w &= w - 1) {
            const int k = __builtin_ctzll(w);
            const unsigned char value = codes.pixel[pairs[2 * k]];
            const unsigned long n = starts[k + 1] - starts[k];
            if (n <= kSpan) {
                const uint64_t pattern = 0x0101010101010101ull * value;
                store8(dest + starts[k], pattern);
                store8(dest + starts[k] + 8, pattern);
            } else {
                fillRun(dest + starts[k], value, n);
            }
            std::memcpy(dest + starts[k + 1], behind[r++], kSpan);
        }
        total = end;
    }
}

}  // namespace

bool uncompresseDataByRLE(char* dest, unsigned long /*destLen: the picture size is fixed*/, char* src,
                          unsigned long srcLen) {
    if (src == nullptr) {
        kwlog::text("uncompresseDataByRLE srcData nullptr.");
        return false;
    }
    const auto* code = reinterpret_cast<const unsigned char*>(src);
    unsigned long i = 0, total = 0;
    decodeGroups(dest, code, srcLen, i, total);
    // The last pairs, and runs that reach the end of the picture: those are counted but
    // written only up to the end.
    for (; i < srcLen; i += 2) {
        const unsigned char value = pixelOf(code[i]);
        const unsigned long n = runLength(code[i + 1]);
        if (value != kSkipped && total < noteformat::kPictureSize) fillRun(dest + total, value, std::min(n, noteformat::kPictureSize - total));
        total += n;
    }
    if (total != noteformat::kPictureSize) {
        kwlog::text("uncompresseDataByRLE DataLen:");
        kwlog::unsignedNumber(total);
    }
    return true;
}

namespace {

// The whole 16384-pixel pairs of a run; the counter keeps the remainder below 16384.
// Returns the end of what it wrote.
inline unsigned char* writeWholePairs(int& count, unsigned char code, unsigned char* p) {
    for (int whole = count >> 14; whole > 0; --whole) {
        *p++ = code;
        *p++ = 0xFF;
    }
    count &= 0x3FFF;
    return p;
}

// The pairs of one run: whole 16384-pixel pairs, then at most one multiple of 128 and one
// pair of 1 to 127 pixels. The counter keeps the remainder below 16384. Returns the end of
// what it wrote. Inline here so that the encoder, which codes a run for nearly every pixel
// of a badly compressible picture, does not pay a call through the exported unitForRLE.
inline unsigned char* writeRun(int& count, unsigned char code, unsigned char* p) {
    p = writeWholePairs(count, code, p);
    if (const int m = count >> 7) {
        *p++ = code;
        *p++ = static_cast<unsigned char>(0x7F + m);
    }
    if (const int r = count & 0x7F) {
        *p++ = code;
        *p++ = static_cast<unsigned char>(r - 1);
    }
    return p;
}

}  // namespace

int unitForRLE(int& count, unsigned char value, unsigned char* out, unsigned long& outLen) {
    const int written = static_cast<int>(writeRun(count, COMPRESS_INDEX[value], out) - out);
    outLen += written;
    return written;
}

namespace {

// The eight values a layer is made of: only runs of these pass a block at a time.
constexpr std::array<bool, 256> kIsPixelValue = [] {
    std::array<bool, 256> is{};
    for (unsigned byte = 0; byte < 256; ++byte) is[byte] = noteformat::isPixelValue(static_cast<uint8_t>(byte));
    return is;
}();

constexpr unsigned long kMaxBlocksAtOnce = 1ul << 16;

// The number of whole 8-byte blocks from `from` on, at most `blocks` and at most
// kMaxBlocksAtOnce, in which every byte is `value`. In handwriting most calls find none or
// a few, so the first block is looked at alone; long runs then pass four blocks at a time,
// well under one comparison per block.
inline unsigned long countBlocksOf(const char* from, unsigned long blocks, unsigned char value) {
    const uint64_t pattern = 0x0101010101010101ull * value;
    uint64_t w;
    std::memcpy(&w, from, 8);
    if (w != pattern) return 0;
    const unsigned long limit = std::min(blocks, kMaxBlocksAtOnce);
    unsigned long n = 1;
    for (; n + 4 <= limit; n += 4) {
        uint64_t w0, w1, w2, w3;
        std::memcpy(&w0, from + 8 * n, 8);
        std::memcpy(&w1, from + 8 * n + 8, 8);
        std::memcpy(&w2, from + 8 * n + 16, 8);
        std::memcpy(&w3, from + 8 * n + 24, 8);
        if (((w0 ^ pattern) | (w1 ^ pattern) | (w2 ^ pattern) | (w3 ^ pattern)) != 0) break;
    }
    for (; n < limit; ++n) {
        std::memcpy(&w, from + 8 * n, 8);
        if (w != pattern) break;
    }
    return n;
}

// The runs that begin and end within a block, by the mask of the bytes that begin a run
// (bit k for byte k), leaving out the first of those, whose run came into the block: where
// each begins and its length byte, at most seven.
struct RunsInBlock {
    unsigned char count[256];
    unsigned char start[256][7];
    unsigned char lengthByte[256][7];
};

constexpr RunsInBlock kRunsInBlock = [] {
    RunsInBlock t{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        int begun = -1;
        for (int k = 0; k < 8; ++k) {
            if (!(mask >> k & 1)) continue;
            if (begun >= 0) {
                t.start[mask][t.count[mask]] = static_cast<unsigned char>(begun);
                t.lengthByte[mask][t.count[mask]] = static_cast<unsigned char>(k - begun - 1);
                ++t.count[mask];
            }
            begun = k;
        }
    }
    return t;
}();

// The bytes of a block that end the run before them, as a mask (bit k for byte k). A byte
// is compared as signed with the run value as unsigned, so a byte of 0x80 or more never
// continues a run: each 0xFE or 0xFF met here becomes a run of its own. The position test
// looks at the place in the block, not in the input: it holds only for the last byte of an
// input of exactly 8 bytes, whose last byte is then a run of its own. The block's bytes lie
// in the word from its low end on (the host is little-endian, as the file is).
inline unsigned runEnds(uint64_t block, unsigned char runValue, unsigned long size) {
    constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7Full, kHigh = 0x8080808080808080ull;
    const uint64_t differs = block ^ ((block << 8) | runValue);  // each byte against the one before
    uint64_t ends = ((((differs & kLow7) + kLow7) | differs) | block) & kHigh;
    if (size == 8) ends |= 0x80ull << 56;
    // The high bit of each byte, gathered into the low eight bits.
    return static_cast<unsigned>(((ends >> 7) * 0x0102040810204080ull) >> 56);
}

// Codes one block that the fast step did not take, as the byte-by-byte rules above have it,
// but by the mask of its run ends: the run that came in is closed, the runs within the block
// are taken from the table (seven pairs are always written, and kept as far as there are
// runs, so that no branch depends on their number), and the last run stays open. Writes up
// to 14 bytes past the pairs it keeps.
inline unsigned char* codeBlock(const char* block, unsigned long size, int& count, unsigned char& runValue,
                                unsigned char* out) {
    uint64_t x;
    std::memcpy(&x, block, 8);
    const unsigned ends = runEnds(x, runValue, size);
    if (ends == 0) {
        count += 8;
        return out;
    }
    int closing = count + __builtin_ctz(ends);
    const unsigned char code = COMPRESS_INDEX[runValue];
    if (closing >= 128) {
        out = writeRun(closing, code, out);
    } else {
        out[0] = code;
        out[1] = static_cast<unsigned char>(closing - 1);
        out += closing != 0 ? 2 : 0;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(block);
    for (int j = 0; j < 7; ++j) {
        out[2 * j] = COMPRESS_INDEX[bytes[kRunsInBlock.start[ends][j]]];
        out[2 * j + 1] = kRunsInBlock.lengthByte[ends][j];
    }
    // The last run holds the last byte, whatever came before it.
    count = 8 - (31 - __builtin_clz(ends));
    runValue = static_cast<unsigned char>(x >> 56);
    return out + 2 * kRunsInBlock.count[ends];
}

}  // namespace

bool compresseDataByRLE(char* src, unsigned long size, unsigned char* dest, unsigned long& destLen) {
    // A badly compressible input needs up to two bytes a pixel, twice the input's size; a
    // block's coder writes up to 14 bytes past that.
    const unsigned long workSize = size > ULONG_MAX / 4 ? 0 : 2 * size + 16;
    std::unique_ptr<unsigned char[]> work(workSize ? new (std::nothrow) unsigned char[workSize] : nullptr);
    if (!work) {
        kwlog::text("compresseDataByRLE oriDestData malloc failed.");
        return false;
    }
    unsigned long workLen = 0;
    int count = 0;
    unsigned char runValue = size > 0 ? static_cast<unsigned char>(src[0]) : 0;

    // The last size mod 8 bytes are not coded; a layer bitmap has none.
    const unsigned long blocks = size / 8;
    for (unsigned long b = 0; b < blocks;) {
        if (kIsPixelValue[runValue]) {
            const unsigned long same = countBlocksOf(src + 8 * b, blocks - b, runValue);
            b += same;
            count += static_cast<int>(8 * same);
            // A run that would outgrow the counter is coded in its whole 16384-pixel pairs
            // now; the remainder stays in the counter, so the code is the same as in one piece.
            if (count > INT_MAX - 8 * int(kMaxBlocksAtOnce) - 8)
                workLen = writeWholePairs(count, COMPRESS_INDEX[runValue], work.get() + workLen) - work.get();
            if (same == kMaxBlocksAtOnce || b == blocks) continue;
        }
        workLen = codeBlock(src + 8 * b, size, count, runValue, work.get() + workLen) - work.get();
        ++b;
    }
    workLen = writeRun(count, COMPRESS_INDEX[runValue], work.get() + workLen) - work.get();

    std::memcpy(dest, work.get(), workLen);
    destLen = workLen;
    return true;
}
