#include "page_pipeline.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <thread>

#include "palette.h"
#include "tool_error.h"

namespace notetool {

namespace {

// Where a run is, as its threads share it.
struct Run {
    const NoteJob& job;
    const OutputFormat& format;
    const DrawingOptions& options;
    const DocumentInfo info;
    const PageEvents& events;
    std::atomic<bool>& outOfSpace;

    bool stopped() const { return outOfSpace.load(); }

    void pageDone() const {
        if (events.pageDone) events.pageDone();
    }

    // A page that cannot be read: the reader's message names the note and the page.
    void readFailed(const std::string& message) const { events.failed(message); }

    // An output that cannot be written, named after the note. A writer's own message
    // (cairo, potrace) may not name the output; an OutputError names it already. The disk
    // filling up is reported once for the whole batch.
    void writeFailed(const std::string& path, const std::exception& e) const {
        const auto* output = dynamic_cast<const OutputError*>(&e);
        if (output && output->outOfSpace() && outOfSpace.exchange(true)) return;
        const std::string name = outputName(path);
        const std::string what = e.what();
        events.failed(job.note + ": " + (what.compare(0, name.size() + 1, name + ":") == 0 ? what : name + ": " + what));
    }
};

std::string pagePath(const NoteJob& job, const OutputFormat& format, int page) {
    return !job.file.empty() ? job.file : joinPath(job.dir, pageFileName(noteStem(job.note), page, job.largestPage, format));
}

void writePage(OutputFile& file, const Run& run, const uint8_t* pixels) {
    const std::unique_ptr<PageWriter> writer = run.format.open(file, run.options, run.info);
    writer->addPage(pixels);
    writer->finish();
}

// One file per page; pages are independent, so each worker takes the next page. Strict,
// the files are completed under their temporary names and renamed only when all are.
NoteResult renderPages(const Run& run, int workers) {
    const NoteJob& job = run.job;
    const int count = static_cast<int>(job.pages.size());
    std::vector<std::unique_ptr<OutputFile>> completed(job.strict ? job.pages.size() : 0);
    std::atomic<int> written{0};
    std::atomic<int> failed{0};
    parallelFor(count, workers, [&](int i) {
        if (run.stopped()) return;
        thread_local std::vector<uint8_t> pixels(kPagePixels);
        const int page = job.pages[static_cast<std::size_t>(i)];
        try {
            composePage(job.note, page, run.options.layers, run.options.transparent, pixels.data());
        } catch (const std::exception& e) {  // one odd page must not end the whole run
            run.readFailed(e.what());
            ++failed;
            run.pageDone();
            return;
        }
        const std::string path = pagePath(job, run.format, page);
        try {
            auto file = std::make_unique<OutputFile>(path);
            writePage(*file, run, pixels.data());
            if (job.strict) {
                file->close();
                completed[static_cast<std::size_t>(i)] = std::move(file);
            } else {
                file->commit();
            }
            ++written;
        } catch (const std::exception& e) {
            run.writeFailed(path, e);
            ++failed;
        }
        run.pageDone();
    });
    if (!job.strict) return {written, failed};
    if (failed > 0 || run.stopped()) {  // the completed files go with their temporary names
        if (failed > 0) run.events.failed(job.note + ": no page written (--strict)");
        return {0, failed + written};
    }
    NoteResult result;
    for (std::size_t i = 0; i < completed.size(); ++i) {
        try {
            completed[i]->commit();
            ++result.written;
        } catch (const std::exception& e) {
            run.writeFailed(pagePath(job, run.format, job.pages[i]), e);
            ++result.failed;
        }
    }
    return result;
}

// One document for all pages. The pages are decoded in parallel, a batch of one page per
// worker at a time, and added to the document in page order; a page that cannot be read is
// a blank page, so that the pages after it keep their numbers.
NoteResult renderDocument(const Run& run, int workers) {
    const NoteJob& job = run.job;
    const int count = static_cast<int>(job.pages.size());
    const int batch = std::max(1, std::min(workers, count));
    std::vector<std::vector<uint8_t>> pixels(static_cast<std::size_t>(batch), std::vector<uint8_t>(kPagePixels));
    std::vector<std::string> errors(static_cast<std::size_t>(batch));
    NoteResult result;
    try {
        OutputFile file(job.file);
        const std::unique_ptr<PageWriter> document = run.format.open(file, run.options, run.info);
        for (int first = 0; first < count; first += batch) {
            if (run.stopped()) return {};  // the disk is full: the document goes unfinished
            const int size = std::min(batch, count - first);
            parallelFor(size, size, [&](int k) {
                const std::size_t slot = static_cast<std::size_t>(k);
                errors[slot].clear();
                try {
                    composePage(job.note, job.pages[static_cast<std::size_t>(first + k)], run.options.layers,
                                run.options.transparent, pixels[slot].data());
                } catch (const std::exception& e) {
                    errors[slot] = e.what();
                }
            });
            for (std::size_t k = 0; k < static_cast<std::size_t>(size); ++k) {
                if (!errors[k].empty()) {
                    if (job.strict) {
                        run.readFailed(errors[k] + "; " + file.name() + " not written");
                        return {0, count};
                    }
                    run.readFailed(errors[k] + "; a blank page in its place");
                    std::memset(pixels[k].data(), kNothing, kPagePixels);
                    ++result.failed;
                } else {
                    ++result.written;
                }
                document->addPage(pixels[k].data());
                run.pageDone();
            }
        }
        document->finish();
        file.commit();
    } catch (const std::exception& e) {
        run.writeFailed(job.file, e);
        return {0, count};
    }
    return result;
}

}  // namespace

NoteResult renderNote(const NoteJob& job, const OutputFormat& format, const DrawingOptions& options, int workers,
                      const PageEvents& events) {
    std::atomic<bool> ownFlag{false};
    const Run run{job, format, options, documentInfo(job.note, options.dpi, options.creator), events,
                  events.outOfSpace ? *events.outOfSpace : ownFlag};
    return format.filePerPage ? renderPages(run, workers) : renderDocument(run, workers);
}

std::vector<std::string> jobOutputs(const NoteJob& job, const OutputFormat& format) {
    if (!job.file.empty()) return {job.file};
    std::vector<std::string> paths;
    for (int page : job.pages) paths.push_back(pagePath(job, format, page));
    return paths;
}

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

}  // namespace notetool
