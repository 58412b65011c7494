// The measured tables as a part of docs/performance.md.
#ifndef BENCH_DOCUMENT_H
#define BENCH_DOCUMENT_H

#include <string>

#include "results.h"

namespace bench {

// The document, with two marker lines in it. What stands between them is replaced.
class document {
  public:
    // Throws when the document cannot be read or has no markers.
    explicit document(const std::string& path);

    // Throws when it cannot be written.
    void write(const results& measured) const;

  private:
    std::string path_;
    std::string before_;
    std::string after_;
};

}  // namespace bench

#endif
