#include "LinePieces.h"

#include <climits>
#include <streambuf>

#include "zivor/ZIVOR.h"

void LinePieces::Fill(size_t want) {
  std::streambuf* buffer = in_.rdbuf();
  while (!lineComplete_ && pending_.size() < want) {
    const int c = buffer->sbumpc();
    if (c == std::char_traits<char>::eof()) {
      in_.setstate(std::ios::eofbit);
      lineComplete_ = true;
    } else if (c == '\n') {
      lineComplete_ = true;
      lineOpen_ = true;  // an empty line is a line all the same
    } else {
      pending_.push_back(c == '\0' ? ' ' : static_cast<char>(c));
      lineOpen_ = true;
    }
  }
}

bool LinePieces::Next(std::string* piece, bool* lineEnd, size_t* lineStart) {
  for (size_t want = kPieceBytes;; want *= 2) {
    Fill(want + 1);
    if (!lineOpen_) return false;  // nothing left of the input
    if (lineComplete_ && pending_.size() <= want) {
      if (!pending_.empty() && pending_.back() == '\r') pending_.pop_back();
      piece->swap(pending_);
      pending_.clear();
      *lineEnd = true;
      *lineStart = handedOver_;
      lineComplete_ = lineOpen_ = false;
      handedOver_ = 0;
      checker_->Check(*piece);
      return true;
    }
    const size_t window = pending_.size() < INT_MAX ? pending_.size() : INT_MAX;
    const int cut = ZIVOR_GetSafeCut(pending_.data(), static_cast<int>(window));
    if (cut > 0) {
      piece->assign(pending_, 0, static_cast<size_t>(cut));
      pending_.erase(0, static_cast<size_t>(cut));
      *lineEnd = false;
      *lineStart = handedOver_;
      handedOver_ += static_cast<size_t>(cut);
      checker_->Check(*piece);
      return true;
    }
    // No cut yet (a line break ahead, or no sentence start in reach): read
    // on, up to the whole line.
  }
}
