// notetool render, and the page pipeline that render and convert share.

#include <algorithm>
#include <atomic>
#include <sys/stat.h>
#include <thread>

#include "atomic_file.h"
#include "commands.h"
#include "console.h"
#include "page_selection.h"
#include "palette.h"
#include "png_output.h"
#include "vector_output.h"

namespace notetool {

namespace {

bool isDirectory(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string joinPath(const std::string& dir, const std::string& name) {
    if (dir.empty()) return name;
    return dir.back() == '/' ? dir + name : dir + "/" + name;
}

// The writers' own errors (cairo, potrace) may not name the file; the error line must.
std::string outputError(const std::string& path, const std::exception& e) {
    const std::string what = e.what();
    return what.compare(0, path.size(), path) == 0 ? what : path + ": " + what;
}

VectorOptions vectorOptions(const RenderOptions& options) {
    VectorOptions vector;
    vector.scale = options.scale;
    vector.transparent = options.transparent;
    vector.raster = options.raster;
    return vector;
}

void writePage(const std::string& path, const uint8_t* pixels, const RenderOptions& options) {
    if (options.format == "svg") {
        writeSvgPage(path, pixels, vectorOptions(options));
    } else {
        PngOptions png;
        png.scale = options.scale;
        png.transparent = options.transparent;
        writePng(path, pixels, png);
    }
}

// One file per page; pages are independent, so each worker takes the next page.
int renderPages(const NoteJob& job, const RenderOptions& options, int workers, Progress* progress) {
    std::atomic<int> failed{0};
    parallelFor(static_cast<int>(job.pages.size()), workers, [&](int i) {
        thread_local std::vector<uint8_t> pixels(kPagePixels);
        const int page = job.pages[static_cast<std::size_t>(i)];
        const std::string path = !job.file.empty() ? job.file
            : joinPath(job.dir, pageFileName(noteStem(job.note), page, job.largestPage, options.format));
        try {
            composePage(job.note, page, options.layers, pixels.data());
            try {
                writePage(path, pixels.data(), options);
            } catch (const ToolError&) {
                throw;
            } catch (const std::runtime_error& e) {
                throw ToolError(outputError(path, e));
            }
        } catch (const std::exception& e) {  // one odd file must not end the whole run
            reportError(e.what());
            ++failed;
        }
        if (progress) progress->pageDone();
    });
    return failed;
}

// One document for all pages. The pages are decoded in parallel, a batch of one page per
// worker at a time, and added to the document in page order.
int renderPdf(const NoteJob& job, const RenderOptions& options, int workers, Progress* progress) {
    const int count = static_cast<int>(job.pages.size());
    const int batch = std::max(1, std::min(workers, count));
    std::vector<std::vector<uint8_t>> pixels(static_cast<std::size_t>(batch), std::vector<uint8_t>(kPagePixels));
    std::vector<std::string> errors(static_cast<std::size_t>(batch));
    try {
        PdfDocument document(job.file, vectorOptions(options));
        for (int first = 0; first < count; first += batch) {
            const int size = std::min(batch, count - first);
            parallelFor(size, size, [&](int k) {
                const std::size_t slot = static_cast<std::size_t>(k);
                errors[slot].clear();
                try {
                    composePage(job.note, job.pages[static_cast<std::size_t>(first + k)], options.layers, pixels[slot].data());
                } catch (const std::exception& e) {
                    errors[slot] = e.what();
                }
            });
            for (std::size_t k = 0; k < static_cast<std::size_t>(size); ++k) {
                if (!errors[k].empty()) throw ToolError(errors[k] + "; " + job.file + " not written");
                document.addPage(pixels[k].data());
                if (progress) progress->pageDone();
            }
        }
        document.finish();
    } catch (const ToolError& e) {
        reportError(e.what());
        return count;
    } catch (const std::exception& e) {
        reportError(outputError(job.file, e));
        return count;
    }
    return 0;
}

}  // namespace

int defaultWorkers() { return static_cast<int>(std::max(1u, std::thread::hardware_concurrency())); }

void parallelFor(int count, int workers, const std::function<void(int)>& body) {
    const int threads = std::min(count, workers);
    if (threads <= 1) {
        for (int i = 0; i < count; ++i) body(i);
        return;
    }
    std::atomic<int> next{0};
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t)
        pool.emplace_back([&] {
            for (int i = next++; i < count; i = next++) body(i);
        });
    for (std::thread& thread : pool) thread.join();
}

int renderNote(const NoteJob& job, const RenderOptions& options, int workers, Progress* progress) {
    if (options.format == "pdf") return renderPdf(job, options, workers, progress);
    return renderPages(job, options, workers, progress);
}

void addDrawingOptions(CLI::App& command, RenderOptions& options, std::vector<std::string>& layerList) {
    command.add_option("--layers", layerList,
                       "Draw only these layers (comma-separated: MAINLAYER, LAYER1, LAYER2, LAYER3, BGLAYER), "
                       "still in the page's own order")
        ->delimiter(',');
    command.add_flag_callback("--no-background", [&options] { options.layers.background = false; },
                              "Leave out the background layer (BGLAYER)");
    command.add_option("--scale", options.scale, "Scale the page by this factor (default 1: 1404 x 1872 pixels)")
        ->check(CLI::PositiveNumber);
    command.add_flag("--transparent", options.transparent, "Leave out the white paper: only ink is opaque");
    command.add_flag("--raster", options.raster, "PDF and SVG: embed the page as a lossless image instead of tracing it");
}

void takeLayerList(const std::vector<std::string>& layerList, RenderOptions& options) {
    for (const std::string& name : layerList) {
        if (std::find(kDefaultLayerOrder.begin(), kDefaultLayerOrder.end(), name) == kDefaultLayerOrder.end())
            throw UsageError("--layers: unknown layer " + name + " (known: MAINLAYER, LAYER1, LAYER2, LAYER3, BGLAYER)");
        options.layers.only.insert(name);
    }
}

void addRenderCommand(CLI::App& app, Runner& run) {
    struct Args {
        std::string note;
        std::string out;
        std::string pages;
        std::string format;
        int workers = defaultWorkers();
        std::vector<std::string> layers;
        RenderOptions options;
    };
    auto args = std::make_shared<Args>();
    CLI::App* command = app.add_subcommand("render", "Draw pages as the tablet shows them, as PNG, PDF or SVG");
    command->footer(
        "Pages are composited on white paper from the bottom up: BGLAYER, LAYER3, LAYER2, LAYER1, MAINLAYER. "
        "A page whose LAYERSEQ lists layers (comma-separated, top first, e.g. MAINLAYER,LAYER1,BGLAYER) is drawn "
        "in that order, and layers it does not list are left out; LAYERSEQ \"nolayer\" means the default order.\n"
        "OUT is a file for a PDF or for a single page, a folder otherwise, where pages are named "
        "<note>-p<N>.<ext>, N zero-padded to the width of the largest page number. Without --format the format "
        "is taken from OUT's extension (.png, .pdf, .svg), else PNG.");
    command->add_option("FILE", args->note, "The note file")->required();
    command->add_option("-o,--output", args->out, "Output file or folder (OUT)")->required();
    command->add_option("--pages", args->pages, "Pages to draw, by the index's numbers, e.g. 1,3-5 (default: all)");
    command->add_option("--format", args->format, "png, pdf or svg")->check(CLI::IsMember({"png", "pdf", "svg"}));
    command->add_option("-j,--jobs", args->workers, "Number of workers (default: one per core)")->check(CLI::PositiveNumber);
    addDrawingOptions(*command, args->options, args->layers);

    command->callback([args, &run] {
        run = [args]() -> int {
            RenderOptions& options = args->options;
            takeLayerList(args->layers, options);
            const std::string extension = args->out.size() > 4 ? args->out.substr(args->out.size() - 4) : "";
            options.format = !args->format.empty() ? args->format
                : extension == ".pdf" ? "pdf" : extension == ".svg" ? "svg" : "png";

            NoteJob job;
            job.note = args->note;
            const std::vector<int> notePageList = notePages(job.note);
            if (notePageList.empty()) throw ToolError(job.note + ": the note has no pages");
            job.pages = selectPages(args->pages, notePageList);
            job.largestPage = notePageList.back();

            const bool outIsFolder = isDirectory(args->out) || args->out.back() == '/';
            if (options.format == "pdf" && outIsFolder)
                job.file = joinPath(args->out, noteStem(job.note) + ".pdf");
            else if ((options.format == "pdf" || job.pages.size() == 1) && !outIsFolder)
                job.file = args->out;
            else
                job.dir = args->out;
            const std::size_t slash = job.file.rfind('/');
            makeDirectories(!job.dir.empty() ? job.dir : slash == std::string::npos ? "." : job.file.substr(0, slash + 1));
            return renderNote(job, options, args->workers, nullptr) == 0 ? kExitOk : kExitFailed;
        };
    });
}

}  // namespace notetool
