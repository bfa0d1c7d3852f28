#include "pdf_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>

#include "output_file.h"
#include "page_tracer.h"
#include "palette.h"
#include "palette_picture.h"
#include "tool_error.h"

namespace notetool {

namespace {

using Object = QPDFObjectHandle;

// Finished pages' data, kept in an unnamed temporary file until qpdf writes the document,
// which then reads each page back as it comes to it. The file has no name, so nothing is
// left behind however the process ends.
class PageSpool : public Object::StreamDataProvider {
public:
    PageSpool() : fd_(openUnnamed()) {}
    ~PageSpool() override { ::close(fd_); }
    PageSpool(const PageSpool&) = delete;
    PageSpool& operator=(const PageSpool&) = delete;

    // Keeps the stream's data until it is written.
    void add(const Object& stream, const std::string& data) {
        for (std::size_t done = 0; done < data.size();) {
            const ssize_t wrote = ::pwrite(fd_, data.data() + done, data.size() - done, off_t(end_ + done));
            if (wrote < 0 && errno == EINTR) continue;
            if (wrote <= 0) fail("cannot keep a finished page", wrote < 0 ? errno : ENOSPC);
            done += std::size_t(wrote);
        }
        extents_[stream.getObjGen()] = {end_, data.size()};
        end_ += data.size();
    }

    void provideStreamData(QPDFObjGen const& stream, Pipeline* pipeline) override {
        const Extent extent = extents_.at(stream);
        char buffer[1 << 16];
        for (std::size_t done = 0; done < extent.size;) {
            const ssize_t got = ::pread(fd_, buffer, std::min(sizeof buffer, extent.size - done), off_t(extent.at + done));
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) fail("cannot read a finished page back", got < 0 ? errno : EIO);
            pipeline->write(reinterpret_cast<unsigned char*>(buffer), std::size_t(got));
            done += std::size_t(got);
        }
    }

private:
    struct Extent {
        std::size_t at;
        std::size_t size;
    };

    [[noreturn]] static void fail(const std::string& what, int error) {
        throw ToolError("a temporary file: " + what + ": " + std::strerror(error));
    }

    // In TMPDIR (else /tmp), with no name; where the file system cannot make such a file,
    // one whose name is removed at once.
    static int openUnnamed() {
        const char* env = std::getenv("TMPDIR");
        const std::string dir = env && *env ? env : "/tmp";
        int fd = ::open(dir.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
        if (fd < 0) {
            std::string path = dir + "/notetool-pages.XXXXXX";
            fd = ::mkostemp(path.data(), O_CLOEXEC);
            if (fd >= 0) ::unlink(path.c_str());
        }
        if (fd < 0) fail("cannot make one in " + dir, errno);
        return fd;
    }

    int fd_;
    std::size_t end_ = 0;
    std::map<QPDFObjGen, Extent> extents_;
};

// What qpdf writes goes to the output file, whose failures carry the system's reason.
class OutputPipeline : public Pipeline {
public:
    explicit OutputPipeline(OutputFile& file) : Pipeline("notetool output", nullptr), file_(file) {}
    void write(unsigned char const* data, size_t length) override { file_.write(data, length); }
    void finish() override {}

private:
    OutputFile& file_;
};

std::string number(double value, int decimals = 4) { return Object::newReal(value, decimals).unparse(); }

// The picture's image: its palette data as they are, read as PNG rows (one filter byte a
// row), each pixel a square that no viewer smooths. Transparent paper is the palette's
// transparent entry, masked out by its index.
Object pictureImage(QPDF& pdf, const Palette& palette) {
    std::string lookup;
    for (uint32_t colour : palette.colours)
        lookup += {static_cast<char>(colour >> 16), static_cast<char>(colour >> 8), static_cast<char>(colour)};
    const std::string bits = std::to_string(palette.bitDepth);
    Object image = Object::newStream(&pdf);
    Object dict = image.getDict();
    dict.replaceKey("/Type", Object::newName("/XObject"));
    dict.replaceKey("/Subtype", Object::newName("/Image"));
    dict.replaceKey("/Width", Object::newInteger(kPageWidth));
    dict.replaceKey("/Height", Object::newInteger(kPageHeight));
    dict.replaceKey("/ColorSpace", Object::newArray({Object::newName("/Indexed"), Object::newName("/DeviceRGB"),
                                                     Object::newInteger(long(palette.colours.size()) - 1),
                                                     Object::newString(lookup)}));
    dict.replaceKey("/BitsPerComponent", Object::newInteger(palette.bitDepth));
    dict.replaceKey("/Interpolate", Object::newBool(false));
    if (const int clear = palette.transparentIndex(); clear >= 0)
        dict.replaceKey("/Mask", Object::newArray({Object::newInteger(clear), Object::newInteger(clear)}));
    return image;
}

class PdfWriter : public PageWriter {
public:
    PdfWriter(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info)
        : file_(file),
          options_(options),
          width_(pagePoints(kPageWidth, info.dpi, options.scale)),
          height_(pagePoints(kPageHeight, info.dpi, options.scale)),
          spool_(std::make_shared<PageSpool>()) {
        pdf_.emptyPDF();
        Object metadata = Object::newDictionary();
        metadata.replaceKey("/Title", Object::newUnicodeString(info.title));
        metadata.replaceKey("/Creator", Object::newUnicodeString(info.creator));
        // No date unless one is asked for, so that the same note makes the same bytes.
        if (!info.created.empty()) metadata.replaceKey("/CreationDate", Object::newString(pdfDate(info.created)));
        pdf_.getTrailer().replaceKey("/Info", pdf_.makeIndirectObject(metadata));
    }

    EncodedPage encodePage(const uint8_t* pixels) const override {
        if (!options_.vector) {
            Palette palette = pagePalette(pixels, options_.transparent);
            return {compressPicture(pixels, 1, palette).data, std::move(palette)};
        }
        // Outlines are in whole units of a fraction of a pixel, y down: drawn through a
        // matrix that makes them points, y up. Eight decimals keep the far corner of the
        // page within a thousandth of a unit.
        const double perUnit = width_ / (kPageWidth * kOutlineUnitsPerPixel);
        std::string ops = number(perUnit, 8) + " 0 0 " + number(-perUnit, 8) + " 0 " + number(height_) + " cm\n";
        if (!options_.transparent) {
            ops += colourOperator(kPaper) + "0 0 " + std::to_string(kPageWidth * kOutlineUnitsPerPixel) + " " +
                   std::to_string(kPageHeight * kOutlineUnitsPerPixel) + " re\nf\n";
        }
        for (const ColourOutlines& colour : tracePage(pixels, !options_.transparent, PathSyntax::Pdf))
            ops += colourOperator(colour.argb) + colour.path + "f\n";
        return {compressZlib(ops.data(), ops.size()), {}};
    }

    void addEncodedPage(EncodedPage page) override {
        const Object flate = Object::newName("/FlateDecode");
        Object resources = Object::newDictionary();
        Object contents;
        if (options_.vector) {
            contents = Object::newStream(&pdf_);
            contents.replaceStreamData(spool_, flate, Object::newNull());
            spool_->add(contents, page.bytes);
        } else {
            Object image = pictureImage(pdf_, page.palette);
            Object rows = Object::parse("<< /Predictor 15 /Colors 1 /BitsPerComponent " +
                                        std::to_string(page.palette.bitDepth) + " /Columns " + std::to_string(kPageWidth) +
                                        " >>");
            image.replaceStreamData(spool_, flate, rows);
            spool_->add(image, page.bytes);
            resources.replaceKey("/XObject", Object::newDictionary({{"/Picture", image}}));
            contents = Object::newStream(&pdf_, "q " + number(width_) + " 0 0 " + number(height_) + " 0 0 cm\n/Picture Do\nQ\n");
        }
        Object pageObject = pdf_.makeIndirectObject(Object::newDictionary());
        pageObject.replaceKey("/Type", Object::newName("/Page"));
        pageObject.replaceKey("/MediaBox", Object::newArray({Object::newInteger(0), Object::newInteger(0),
                                                             Object::newReal(width_, 4), Object::newReal(height_, 4)}));
        pageObject.replaceKey("/Resources", resources);
        pageObject.replaceKey("/Contents", contents);
        QPDFPageDocumentHelper(pdf_).addPage(QPDFPageObjectHelper(pageObject), false);
    }

    void finish() override {
        OutputPipeline output(file_);
        QPDFWriter writer(pdf_);
        writer.setOutputPipeline(&output);
        // The pages' streams are written as they were made: compressed once, by their encoder.
        writer.setCompressStreams(false);
        writer.setDecodeLevel(qpdf_dl_none);
        writer.setDeterministicID(true);
        writer.write();
    }

private:
    static std::string colourOperator(uint32_t argb) {
        std::string op;
        // Six decimals name every level of 255 exactly.
        for (int shift : {16, 8, 0}) op += number(((argb >> shift) & 0xFF) / 255.0, 6) + " ";
        return op + "rg\n";
    }

    OutputFile& file_;
    DrawingOptions options_;
    double width_;   // of a page, in points
    double height_;
    std::shared_ptr<PageSpool> spool_;
    QPDF pdf_;
};

}  // namespace

std::unique_ptr<PageWriter> openPdf(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info) {
    return std::make_unique<PdfWriter>(file, options, info);
}

std::string pdfDate(const std::string& iso8601) {
    if (iso8601.empty()) return "";
    std::string date = "D:";
    for (char c : iso8601)
        if (c >= '0' && c <= '9') date += c;
    return date + "Z";
}

}  // namespace notetool
