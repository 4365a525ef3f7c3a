// SPDX-License-Identifier: MIT
// What the commands say of the machine, for who has the archive but not the library.
#pragma once

#include "tools/archive/writer.hpp"
#include "tools/smi/capture/redaction.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/report/content.hpp"
#include "tools/smi/snapshot/collector.hpp"

#include <cstddef>
#include <functional>
#include <string>

namespace nimba::smi {

// `document` with stand-ins for the names of processes, and for names and paths in its sentences.
// What is a word, a number or a time by its schema stays.
Document redacted_document(Document document, Redactor& redactor);

// `document` without what the doctor says of the user, whom the library knows nothing of.
Document without_user(Document document);

// Asks the commands, which tell of the machine as it is now.
page::Documents ask_for_capture(const Options& options,
                                const std::function<void(const std::string& what)>& progress);

class CaptureDocuments final {
  public:
    // `redactor`: null: names stay. `answers`: what the commands answered.
    CaptureDocuments(const Options& options, archive::Writer& writer, Redactor* redactor,
                     page::Documents answers);

    // Writes an overview of the machine as it is now. Returns false when it was interrupted.
    // `stop`: see Patience.
    bool write_overview(std::size_t sample, int stop);

    // Writes what the commands answered. With stand-ins it is late enough when the nodes that have
    // the names were written.
    void write();

  private:
    void add(const std::string& name, Document document);

    archive::Writer& writer_;
    Redactor* redactor_;
    Collector collector_;
    page::Documents answers_;
};

}  // namespace nimba::smi
