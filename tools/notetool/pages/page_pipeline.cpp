#include "page_pipeline.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include "palette.h"
#include "tool_error.h"

namespace notetool {

namespace {

// The writers' own errors (cairo, potrace) may not name the file; the error line must.
std::string outputError(const std::string& path, const std::exception& e) {
    const std::string what = e.what();
    return what.compare(0, path.size(), path) == 0 ? what : path + ": " + what;
}

void writePage(const std::string& path, const OutputFormat& format, const DrawingOptions& options,
               const uint8_t* pixels) {
    try {
        const std::unique_ptr<PageWriter> writer = format.open(path, options);
        writer->addPage(pixels);
        writer->finish();
    } catch (const ToolError&) {
        throw;
    } catch (const std::runtime_error& e) {
        throw ToolError(outputError(path, e));
    }
}

// One file per page; pages are independent, so each worker takes the next page.
int renderPages(const NoteJob& job, const OutputFormat& format, const DrawingOptions& options, int workers,
                const PageEvents& events) {
    std::atomic<int> failed{0};
    parallelFor(static_cast<int>(job.pages.size()), workers, [&](int i) {
        thread_local std::vector<uint8_t> pixels(kPagePixels);
        const int page = job.pages[static_cast<std::size_t>(i)];
        const std::string path = !job.file.empty() ? job.file
            : joinPath(job.dir, pageFileName(noteStem(job.note), page, job.largestPage, format));
        try {
            composePage(job.note, page, options.layers, pixels.data());
            writePage(path, format, options, pixels.data());
        } catch (const std::exception& e) {  // one odd file must not end the whole run
            events.failed(e.what());
            ++failed;
        }
        if (events.pageDone) events.pageDone();
    });
    return failed;
}

// One document for all pages. The pages are decoded in parallel, a batch of one page per
// worker at a time, and added to the document in page order.
int renderDocument(const NoteJob& job, const OutputFormat& format, const DrawingOptions& options, int workers,
                   const PageEvents& events) {
    const int count = static_cast<int>(job.pages.size());
    const int batch = std::max(1, std::min(workers, count));
    std::vector<std::vector<uint8_t>> pixels(static_cast<std::size_t>(batch), std::vector<uint8_t>(kPagePixels));
    std::vector<std::string> errors(static_cast<std::size_t>(batch));
    try {
        const std::unique_ptr<PageWriter> document = format.open(job.file, options);
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
                document->addPage(pixels[k].data());
                if (events.pageDone) events.pageDone();
            }
        }
        document->finish();
    } catch (const ToolError& e) {
        events.failed(e.what());
        return count;
    } catch (const std::exception& e) {
        events.failed(outputError(job.file, e));
        return count;
    }
    return 0;
}

}  // namespace

int renderNote(const NoteJob& job, const OutputFormat& format, const DrawingOptions& options, int workers,
               const PageEvents& events) {
    return format.filePerPage ? renderPages(job, format, options, workers, events)
                              : renderDocument(job, format, options, workers, events);
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
