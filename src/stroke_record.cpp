// Stroke records: the bytes of one stroke, decoded into a TrailContainer and written from one.

#include <cstdlib>
#include <cstring>
#include <utility>

#include "config.h"
#include "log.h"
#include "status.h"

namespace {

// Reads a stroke record of `length` bytes. Every byte outside the record reads as zero, so
// fields that are read without a check decode deterministically from a short or hostile
// record. Positions are 32-bit, as the record's own arithmetic is.
class RecordReader {
public:
    RecordReader(const char* data, int length) : data_(data), length_(length) {}

    int pos() const { return pos_; }
    void skipTo(int pos) { pos_ = pos; }

    // Whether n bytes from the current position lie wholly inside the record.
    bool fits(int64_t n) const { return pos_ >= 0 && pos_ + n <= length_; }

    void bytes(void* out, int n) {
        if (fits(n)) {
            std::memcpy(out, data_ + pos_, n);
        } else {
            auto* o = static_cast<unsigned char*>(out);
            for (int i = 0; i < n; ++i) {
                const int64_t at = int64_t{pos_} + i;
                o[i] = (at >= 0 && at < length_) ? static_cast<unsigned char>(data_[at]) : 0;
            }
        }
        advance(n);
    }
    template <class T>
    T get() {
        T v;
        bytes(&v, sizeof v);
        return v;
    }
    int32_t i32() { return get<int32_t>(); }
    unsigned char u8() { return get<unsigned char>(); }

    // A NUL-terminated text starting at `at`; the position does not move.
    std::string textAt(int at) const {
        std::string s;
        for (int64_t i = at; i < length_ && data_[i] != '\0'; ++i) s.push_back(data_[i]);
        return s;
    }

    void advance(int64_t n) { pos_ = static_cast<int>(static_cast<uint32_t>(pos_) + static_cast<uint32_t>(n)); }

private:
    const char* data_;
    int length_;
    int pos_ = 0;
};

void readHead(RecordReader& in, TrailContainer& t) {
    int* const attrA[] = {&t.attrA0, &t.attrA1, &t.attrA2, &t.attrA3, &t.attrA4,  &t.attrA5,
                          &t.attrA6, &t.attrA7, &t.attrA8, &t.attrA9, &t.attrA10, &t.attrA11};
    for (int* a : attrA) *a = in.i32();
    t.typeName = in.textAt(48);
    in.skipTo(100);
    t.attrB0 = in.i32();
    t.attrB1 = in.i32();
    t.attrB2 = in.i32();
    t.attrB3 = in.i32();
    t.attrB4 = in.get<uint64_t>();
    t.attrC = in.i32();
    t.maxX = in.i32();
    t.maxY = in.i32();
    t.subName = in.textAt(136);
    in.skipTo(188);
    t.m_emrPointAxis = in.i32();
    t.attrF0 = in.i32();
    t.attrF1 = in.i32();
    t.attrF2 = in.i32();
    t.attrG = in.i32();
}

// A section whose list is sized to its count first and then filled by index. A count whose
// elements could not fit in the whole record fails before the list is sized, so that a
// hostile count never costs memory; a negative count asks for an impossible size and raises
// the standard length error.
template <class T>
bool readResizedSection(RecordReader& in, int length, std::vector<T>& list, const char* name) {
    const int32_t count = in.i32();
    if (int64_t{count} * int64_t{sizeof(T)} > length) {
        kwlog::text(name);
        return false;
    }
    list.resize(static_cast<std::size_t>(static_cast<int64_t>(count)));
    for (int32_t i = 0; i < count; ++i) {
        if (!in.fits(sizeof(T))) {
            kwlog::text(name);
            return false;
        }
        in.bytes(&list[i], sizeof(T));
    }
    return true;
}

// A section whose elements are appended one by one, each checked against the record's end.
template <class T, class List>
bool readAppendedSection(RecordReader& in, List& list, const char* name) {
    const int32_t count = in.i32();
    for (int32_t i = 0; i < count; ++i) {
        if (!in.fits(sizeof(T))) {
            kwlog::text(name);
            return false;
        }
        list.push_back(in.get<T>());
    }
    return true;
}

bool readFlagDraw(RecordReader& in, std::vector<bool>& flags) {
    const int32_t count = in.i32();
    for (int32_t i = 0; i < count; ++i) {
        if (!in.fits(1)) {
            kwlog::text("flagDraw");
            return false;
        }
        flags.push_back(in.u8() != 0);
    }
    return true;
}

// The first element is guarded by the record's minimum length for one area, the later ones
// by their own end.
bool readDisableAreas(RecordReader& in, int length, std::vector<FlagRect>& areas) {
    const int32_t count = in.i32();
    if (count >= 1 && length < 236) {
        kwlog::text("disableAreaList");
        return false;
    }
    for (int32_t i = 0; i < count; ++i) {
        if (!in.fits(sizeof(FlagRect))) {
            kwlog::text("disableAreaList");
            return false;
        }
        areas.push_back(in.get<FlagRect>());
    }
    return true;
}

void readFixedBlock(RecordReader& in, TrailContainer& t) {
    t.attrJ0 = in.i32();
    t.attrJ1 = in.i32();
    t.attrH = in.i32();
    t.attrK = in.i32();
    t.attrL = in.i32();
    for (int& w : t.rectA) w = in.i32();
    for (int& w : t.rectB) w = in.i32();
}

bool readContours(RecordReader& in, std::vector<std::vector<MorvaPointF>>& contours) {
    const int32_t count = in.i32();
    for (int32_t i = 0; i < count; ++i) {
        if (!in.fits(4)) {
            kwlog::text("PointContour");
            return false;
        }
        const int32_t points = in.i32();
        if (points > 0 && !in.fits(int64_t{points} * int64_t{sizeof(MorvaPointF)})) {
            kwlog::text("PointContour");
            return false;
        }
        std::vector<MorvaPointF> contour(points > 0 ? points : 0);
        if (!contour.empty()) in.bytes(contour.data(), points * static_cast<int>(sizeof(MorvaPointF)));
        contours.push_back(std::move(contour));
    }
    return true;
}

enum class Tail { Done, Ended, Overrun };

// The tail fields, each read only when the room named for it is left; their guards are not
// the fields' own widths. Short records end early here without failing.
Tail readTail(RecordReader& in, TrailContainer& t) {
    if (!in.fits(4)) return Tail::Ended;
    t.attrI = in.i32();
    if (!in.fits(8)) return Tail::Ended;
    t.ratioB = in.get<double>();
    if (!in.fits(8)) return Tail::Ended;
    t.attrD = in.u8();
    if (!in.fits(8)) return Tail::Ended;
    t.attrE = in.i32();
    if (!in.fits(4)) return Tail::Ended;
    const int32_t extra = in.i32();
    for (int32_t i = 0; i < extra; ++i) {
        if (!in.fits(4)) {
            kwlog::text("m_controlNums");
            return Tail::Overrun;
        }
        t.extraControlNums.push_back(in.i32());
    }
    if (!in.fits(4)) return Tail::Ended;
    t.pageWidth = in.i32();
    t.pageHeight = in.i32();
    if (!in.fits(4)) return Tail::Ended;
    t.attrN = in.i32();
    if (!in.fits(4)) return Tail::Ended;
    t.attrP = in.u8();
    return Tail::Done;
}

}  // namespace

int data2Trail(char* data, int length, TrailContainer& trail) {
    RecordReader in(data, length);
    readHead(in, trail);
    if (trail.m_emrPointAxis != 1) kwlog::text("m_emrPointAxis != 1");

    in.skipTo(208);
    if (!readDisableAreas(in, length, trail.disableAreaList)) return status::StrokeOverrun;
    if (!readResizedSection(in, length, trail.m_points, "m_points")) return status::StrokeOverrun;
    if (!readResizedSection(in, length, trail.pressures, "pressures")) return status::StrokeOverrun;
    if (!readResizedSection(in, length, trail.angles, "angles")) return status::StrokeOverrun;
    if (!readFlagDraw(in, trail.flagDraw)) return status::StrokeOverrun;
    if (!readAppendedSection<MorvaPoint>(in, trail.epaPoints, "epaPoints")) return status::StrokeOverrun;
    if (!readAppendedSection<int32_t>(in, trail.epaGrays, "epaGrays")) return status::StrokeOverrun;
    readFixedBlock(in, trail);
    if (!readAppendedSection<int32_t>(in, trail.m_controlNums, "m_controlNums")) return status::StrokeOverrun;
    trail.attrM0 = in.i32();
    trail.attrM1 = in.i32();
    trail.attrO = in.u8();

    // Short, older records end before the render flag; they are accepted as read so far.
    if (!in.fits(1)) {
        kwlog::text("renderFlag empty.");
        return status::Ok;
    }
    trail.renderFlag = in.u8();
    if (!readContours(in, trail.PointContour)) return status::StrokeOverrun;

    // The skipped section's elements are not kept; the step is 32-bit arithmetic.
    const int32_t skipped = in.i32();
    in.advance(static_cast<int64_t>(static_cast<uint32_t>(skipped) * 16u));

    return readTail(in, trail) == Tail::Overrun ? status::StrokeOverrun : status::Ok;
}

namespace {

// Writes little-endian fields one after another.
class RecordWriter {
public:
    explicit RecordWriter(char* out) : out_(out) {}

    void bytes(const void* p, std::size_t n) {
        if (n) std::memcpy(out_ + pos_, p, n);
        pos_ += n;
    }
    template <class T>
    void put(T v) { bytes(&v, sizeof v); }
    void i32(int32_t v) { put(v); }
    void u8(unsigned char v) { put(v); }

    template <class List>
    void section(const List& list) {
        i32(static_cast<int32_t>(list.size()));
        bytes(list.data(), list.size() * sizeof(typename List::value_type));
    }
    void text(const std::string& s) {
        put(static_cast<uint32_t>(s.size()));
        bytes(s.data(), s.size());
    }

private:
    char* out_;
    std::size_t pos_ = 0;
};

constexpr std::size_t kHeadSize = 208;
constexpr std::size_t kTextField = 50;

// A text up to and including its first zero byte into a 50-byte field of the head; what a
// string holds after that zero is not part of the text. A text that does not fit is a
// fault of the caller that must not pass silently: the process is stopped.
void copyTextField(char* head, std::size_t at, const std::string& s) {
    const std::size_t length = std::strlen(s.c_str());
    if (length >= kTextField) std::abort();
    std::memcpy(head + at, s.c_str(), length + 1);
}

void writeHead(RecordWriter& out, const TrailContainer& t) {
    char head[kHeadSize] = {};
    const int attrA[] = {t.attrA0, t.attrA1, t.attrA2, t.attrA3, t.attrA4,  t.attrA5,
                         t.attrA6, t.attrA7, t.attrA8, t.attrA9, t.attrA10, t.attrA11};
    std::memcpy(head, attrA, sizeof attrA);
    copyTextField(head, 48, t.typeName);
    const int attrB[] = {t.attrB0, t.attrB1, t.attrB2, t.attrB3};
    std::memcpy(head + 100, attrB, sizeof attrB);
    std::memcpy(head + 116, &t.attrB4, 8);
    const int range[] = {t.attrC, t.maxX, t.maxY};
    std::memcpy(head + 124, range, sizeof range);
    copyTextField(head, 136, t.subName);
    const int axisAndF[] = {t.m_emrPointAxis, t.attrF0, t.attrF1, t.attrF2, t.attrG};
    std::memcpy(head + 188, axisAndF, sizeof axisAndF);
    out.bytes(head, sizeof head);
}

void writeFlagDraw(RecordWriter& out, const std::vector<bool>& flags) {
    out.i32(static_cast<int32_t>(flags.size()));
    for (bool f : flags) out.u8(f ? 1 : 0);
}

// rectB goes into the words of rectA as well as its own: rectA is never written.
void writeFixedBlock(RecordWriter& out, const TrailContainer& t) {
    for (int w : {t.attrJ0, t.attrJ1, t.attrH, t.attrK, t.attrL}) out.i32(w);
    for (int w : t.rectB) out.i32(w);
    for (int w : t.rectB) out.i32(w);
}

}  // namespace

// The encoder writes no skipped section after the contours, unlike the reader's layout;
// records it writes read back differently from there on.
void trail2data(const TrailContainer& t, char* data) {
    RecordWriter out(data);
    writeHead(out, t);
    out.section(t.disableAreaList);
    out.section(t.m_points);
    out.section(t.pressures);
    out.section(t.angles);
    writeFlagDraw(out, t.flagDraw);
    out.section(t.epaPoints);
    out.section(t.epaGrays);
    writeFixedBlock(out, t);
    out.section(t.m_controlNums);
    out.i32(t.attrM0);
    out.i32(t.attrM1);
    out.u8(t.attrO);
    out.u8(t.renderFlag);
    out.i32(static_cast<int32_t>(t.PointContour.size()));
    for (const auto& contour : t.PointContour) out.section(contour);
    out.i32(t.attrI);
    out.put(t.ratioB);
    out.u8(t.attrD);
    out.i32(t.attrE);
    out.section(t.extraControlNums);
    out.i32(t.pageWidth);
    out.i32(t.pageHeight);
    out.i32(t.attrN);
    out.u8(t.attrP);
    out.text(t.textA);
    out.text(t.textB);
}

unsigned long trail2dataSize(const TrailContainer& t) {
    unsigned long size = kHeadSize;
    size += 4 + t.disableAreaList.size() * sizeof(FlagRect);
    size += 4 + t.m_points.size() * sizeof(MorvaPoint);
    size += 4 + t.pressures.size() * sizeof(uint16_t);
    size += 4 + t.angles.size() * sizeof(MorvaPointS);
    size += 4 + t.flagDraw.size();
    size += 4 + t.epaPoints.size() * sizeof(MorvaPoint);
    size += 4 + t.epaGrays.size() * 4;
    size += 13 * 4;
    size += 4 + t.m_controlNums.size() * 4;
    size += 4 + 4 + 1 + 1;
    size += 4;
    for (const auto& contour : t.PointContour) size += 4 + contour.size() * sizeof(MorvaPointF);
    size += 4 + 8 + 1 + 4;
    size += 4 + t.extraControlNums.size() * 4;
    size += 4 + 4 + 4 + 1;
    size += 4 + t.textA.size() + 4 + t.textB.size();
    return size;
}
