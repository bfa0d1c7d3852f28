#include "page_pipeline.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "file_names.h"
#include "output_plan.h"
#include "palette.h"

namespace notetool {

namespace {

// What the exception says, and its cause when it is one of ours.
Failure failureOf(const std::exception& e) {
    const auto* tool = dynamic_cast<const ToolError*>(&e);
    return {e.what(), tool ? tool->cause : Cause{}};
}

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
    void readFailed(const Failure& failure) const { events.failed(failure); }

    // An output that cannot be written, named after the note. A writer's own message
    // (cairo, potrace) may not name the output; an OutputError names it already. The disk
    // filling up is reported once for the whole batch.
    void writeFailed(const std::string& path, const std::exception& e) const {
        const auto* output = dynamic_cast<const OutputError*>(&e);
        if (output && output->outOfSpace() && outOfSpace.exchange(true)) return;
        const std::string name = outputName(path);
        Failure failure = failureOf(e);
        const std::string& what = failure.message;
        failure.message = job.note + ": " + (what.compare(0, name.size() + 1, name + ":") == 0 ? what : name + ": " + what);
        if (failure.cause.file.empty()) failure.cause.file = name;
        events.failed(failure);
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
            run.readFailed(failureOf(e));
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
        if (failed > 0) run.events.failed({job.note + ": no page written (--strict)", {}});
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

// Runs make(i) for i in [0, count) on up to `workers` threads and hands the results to
// take(i, result) on the calling thread, in order of i, until take returns false. A
// failure of take is rethrown once the workers have stopped.
template <class Result>
void inPageOrder(int count, int workers, const std::function<Result(int)>& make,
                 const std::function<bool(int, Result)>& take) {
    if (workers <= 1 || count <= 1) {
        for (int i = 0; i < count; ++i)
            if (!take(i, make(i))) return;
        return;
    }
    // Results wait here until those before them are taken; a worker starts no page more
    // than `window` pages ahead of the next one to take.
    const int window = 2 * workers;
    std::mutex lock;
    std::condition_variable changed;
    std::map<int, Result> done;
    int next = 0;       // the next page to start
    int taken = 0;      // pages taken so far
    bool stop = false;  // the taker wants no more
    std::vector<std::thread> pool;
    for (int t = 0; t < std::min(workers, count); ++t)
        pool.emplace_back([&] {
            std::unique_lock<std::mutex> guard(lock);
            while (true) {
                changed.wait(guard, [&] { return stop || next >= count || next < taken + window; });
                if (stop || next >= count) return;
                const int i = next++;
                guard.unlock();
                Result result = make(i);
                guard.lock();
                done.emplace(i, std::move(result));
                changed.notify_all();
            }
        });
    std::exception_ptr failure;
    {
        std::unique_lock<std::mutex> guard(lock);
        while (taken < count && !stop) {
            changed.wait(guard, [&] { return done.count(taken) > 0; });
            Result result = std::move(done.at(taken));
            done.erase(taken);
            guard.unlock();
            bool more = false;
            try {
                more = take(taken, std::move(result));
            } catch (...) {
                failure = std::current_exception();
            }
            guard.lock();
            ++taken;
            stop = !more;
            changed.notify_all();
        }
        stop = true;
        changed.notify_all();
    }
    for (std::thread& thread : pool) thread.join();
    if (failure) std::rethrow_exception(failure);
}

// A page made ready for the document, or why it could not be read, or why it could not be
// made (rethrown as the document's failure when its turn comes).
struct ReadyPage {
    EncodedPage encoded;
    std::optional<Failure> readError;
    std::exception_ptr encodeError;
};

// Composes and encodes the page; a page that cannot be read is encoded blank, so that the
// pages after it keep their numbers.
ReadyPage preparePage(const Run& run, const PageWriter& document, int page) {
    thread_local std::vector<uint8_t> pixels(kPagePixels);
    ReadyPage ready;
    try {
        composePage(run.job.note, page, run.options.layers, run.options.transparent, pixels.data());
    } catch (const std::exception& e) {
        ready.readError = failureOf(e);
        if (run.job.strict) return ready;  // the document will not be written
        std::memset(pixels.data(), kNothing, kPagePixels);
    }
    try {
        ready.encoded = document.encodePage(pixels.data());
    } catch (...) {
        ready.encodeError = std::current_exception();
    }
    return ready;
}

// One document for all pages. Workers compose and encode pages in parallel, and the pages
// are added to the document in page order as they come; only a few pages a worker are in
// flight at a time, so the memory a note takes does not grow with its length.
NoteResult renderDocument(const Run& run, int workers) {
    const NoteJob& job = run.job;
    const int count = static_cast<int>(job.pages.size());
    NoteResult result;
    try {
        OutputFile file(job.file);
        const std::unique_ptr<PageWriter> document = run.format.open(file, run.options, run.info);
        bool stop = false;
        inPageOrder<ReadyPage>(count, workers, [&](int i) { return preparePage(run, *document, job.pages[std::size_t(i)]); },
                    [&](int, ReadyPage page) {
                        if (stop || run.stopped()) {  // the disk is full: the document goes unfinished
                            stop = true;
                            return false;
                        }
                        if (page.encodeError) std::rethrow_exception(page.encodeError);
                        if (page.readError) {
                            Failure& failure = *page.readError;
                            if (job.strict) {
                                failure.message += "; " + file.name() + " not written";
                                run.readFailed(failure);
                                stop = true;
                                result = {0, count};
                                return false;
                            }
                            failure.message += "; a blank page in its place";
                            run.readFailed(failure);
                            ++result.failed;
                        } else {
                            ++result.written;
                        }
                        document->addEncodedPage(std::move(page.encoded));
                        run.pageDone();
                        return true;
                    });
        if (stop) return run.stopped() ? NoteResult{} : result;
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

int defaultWorkers() {
    return std::min(static_cast<int>(kWorkerBounds.max), static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
}

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
