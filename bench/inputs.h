#ifndef LIBNOTE_BENCH_INPUTS_H
#define LIBNOTE_BENCH_INPUTS_H

// The inputs every benchmark reads: pictures, stroke records and note files, all laid out by
// the note writer once per run, and a way to keep the library's log out of the measurements.

#include <cstdint>
#include <string>
#include <vector>

#include "trailContainer.h"

namespace bench {

// The pictures a layer typically holds, and the worst case for the run-length code.
enum class Picture {
    Blank,        // nothing drawn: every pixel transparent
    Ruled,        // white paper with grey rules, as a background layer
    Dense,        // dense synthetic handwriting: an ink run of 2 to 12 pixels every 20 to 60 pixels
    FullPage,     // the main layer of a full handwritten page (page 1 of handwrittenNote)
    Alternating,  // the colour changes at every pixel
};
constexpr int kPictureKinds = 5;

const char* pictureName(Picture picture);
const std::vector<uint8_t>& pixels(Picture picture);
// The run-length code of the picture with the spare byte behind it that the decoder may read.
const std::vector<char>& code(Picture picture);

// A note and a page of it whose main layer holds the picture.
struct NotePage {
    const std::string& path;
    int page;
};
NotePage pictureSource(Picture picture);

// Notes of 1 and of 100 pages, each page a blank main layer and an empty stroke block.
const std::string& pagesNote(int pages);

// A note of 60 full handwritten pages, as a busy notebook holds them.
constexpr int kHandwrittenPages = 60;
const std::string& handwrittenNote();

// The strokes of a page of handwriting, as the writer laid them out, their records, and a
// note page that holds them: 2,000 synthetic strokes of 60 points, or the strokes of a full
// handwritten page.
enum class Strokes { Synthetic, FullPage };
constexpr int kSyntheticStrokes = 2000;
constexpr int kPointsPerStroke = 60;
const char* strokesName(Strokes kind);
const std::vector<TrailContainer>& strokes(Strokes kind);
const std::vector<std::string>& strokeRecords(Strokes kind);
NotePage strokesSource(Strokes kind);

// Sends standard output to /dev/null at the file-descriptor level while it lives, so that
// the library's log costs what writing to a discarded stream costs and does not flood the
// benchmark's report.
class QuietStdout {
public:
    QuietStdout();
    ~QuietStdout();
    QuietStdout(const QuietStdout&) = delete;
    QuietStdout& operator=(const QuietStdout&) = delete;

private:
    int saved_;
};

}  // namespace bench

#endif
