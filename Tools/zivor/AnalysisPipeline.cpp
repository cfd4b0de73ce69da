#include "AnalysisPipeline.h"

#include <exception>
#include <utility>

#include "Progress.h"
#include "LibraryLog.h"

AnalysisPipeline::AnalysisPipeline(const Formatter& formatter, unsigned jobs, FILE* out,
                                   Progress* progress)
    : formatter_(formatter),
      capacity_(jobs > 1 ? jobs * kBatchesPerJob : 1),
      out_(out),
      progress_(progress) {
  for (unsigned i = 0; jobs > 1 && i < jobs; ++i) threads_.emplace_back(&AnalysisPipeline::Work, this);
}

AnalysisPipeline::~AnalysisPipeline() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  work_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void AnalysisPipeline::Analyse(Batch* batch) const {
  try {
    for (const Piece& piece : batch->pieces) {
      if (!formatter_.Append(piece, &batch->output)) {
        batch->failed = true;
        return;
      }
    }
  } catch (const std::exception& e) {  // the output of a piece did not fit in memory
    batch->failed = true;
    batch->output.clear();
    batch->error = e.what();
  }
}

bool AnalysisPipeline::Add(Piece piece) {
  if (failed_) return false;
  open_.bytes += static_cast<int64_t>(piece.text.size() + (piece.lineEnd ? 1 : 0));
  open_.pieces.push_back(std::move(piece));
  if (static_cast<size_t>(open_.bytes) >= kBatchBytes) HandOver();
  return !failed_;
}

bool AnalysisPipeline::Finish() {
  if (!failed_ && !open_.pieces.empty()) HandOver();
  while (!failed_ && !window_.empty()) WriteFinished(true);
  fflush(out_);
  return !failed_;
}

void AnalysisPipeline::HandOver() {
  auto batch = std::make_unique<Batch>(std::move(open_));
  open_ = Batch();
  if (threads_.empty()) {
    Analyse(batch.get());
    batch->done = true;
  }
  while (!failed_ && window_.size() >= capacity_) WriteFinished(true);
  if (failed_) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!batch->done) todo_.push_back(batch.get());
    window_.push_back(std::move(batch));
  }
  work_.notify_one();
  WriteFinished(false);
}

bool AnalysisPipeline::WriteFinished(bool wait) {
  for (;;) {
    std::unique_ptr<Batch> head;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      if (wait) finished_.wait(lock, [this] { return window_.front()->done; });
      if (window_.empty() || !window_.front()->done) return true;
      head = std::move(window_.front());
      window_.pop_front();
    }
    wait = false;
    if (!Write(*head)) return false;
  }
}

bool AnalysisPipeline::Write(const Batch& batch) {
  fwrite(batch.output.data(), 1, batch.output.size(), out_);
  if (batch.failed) {
    fflush(out_);
    if (batch.error.empty()) {
      fprintf(stderr, "zivor: the analysis failed; the reason is in %s\n",
              LibraryLogPath().c_str());
    } else {
      fprintf(stderr, "zivor: the analysis stopped: %s\n", batch.error.c_str());
    }
    failed_ = true;
    return false;
  }
  if (progress_ != nullptr) progress_->Add(batch.bytes);
  return true;
}

void AnalysisPipeline::Work() {
  for (;;) {
    Batch* batch = nullptr;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      work_.wait(lock, [this] { return stop_ || !todo_.empty(); });
      if (stop_) return;
      batch = todo_.front();
      todo_.pop_front();
    }
    Analyse(batch);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      batch->done = true;
    }
    finished_.notify_one();
  }
}
