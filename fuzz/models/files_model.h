// The differential run of the file registry: random operations on several
// handles at once, each checked against a plain in-memory model of every
// file's bytes, and the bytes on disk checked after every real close.
// Driven by fuzz/files_differential_fuzz.cpp; the decisions come from a
// byte source, so the fuzzer steers them.
#ifndef QXUTIL_FUZZ_MODELS_FILES_MODEL_H
#define QXUTIL_FUZZ_MODELS_FILES_MODEL_H

#include "common/files_scope.h"
#include "qxutil/files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace qxtest {

/// DifferentialRun - `steps` operations in the directory `dir` (which must
/// exist and be empty) under a cache of `cacheBlocks` descriptors (0: none)
/// of `blockSize` bytes; `next` returns the next decision byte. Returns ""
/// or a description of the first difference from the model.
template <class Next>
std::string DifferentialRun(const std::string& dir, int cacheBlocks, long blockSize, Next next,
                            int steps) {
  RegistrySettings settings;
  settings.cacheBlocks = cacheBlocks;
  settings.blockSize = blockSize;
  ScopedRegistry registry(settings);
  constexpr int kFiles = 3;
  struct File {
    std::string path;
    std::wstring wide;
    std::string bytes; // the model
    int handle = 0;
    int opens = 0;
    long position = 0;
    bool exists = false;
  } files[kFiles];
  auto number = [&](int bits) {
    int v = 0;
    for (int i = 0; i < bits; i += 8)
      v = (v << 8) | next();
    return v & ((1 << bits) - 1);
  };
  auto disk = [](const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  };
  std::ostringstream log;
  for (int i = 0; i < kFiles; ++i) {
    files[i].path = dir + "/file" + std::to_string(i) + ".dat";
    files[i].wide.assign(files[i].path.begin(), files[i].path.end());
    files[i].handle = register_file(files[i].wide.c_str(), FILETYPE_ANY, true);
  }
  for (int step = 0; step < steps; ++step) {
    File& f = files[next() % kFiles];
    int op = next() % 8;
    log << step << ": file " << (&f - files) << " op " << op;
    auto fail = [&](const std::string& what) { return log.str() + ": " + what; };
    if (op == 0 || f.opens == 0) { // open
      bool create = !f.exists || next() % 8 == 0;
      if (f.opens > 0 && create)
        create = false; // creation while in use is refused, as tested elsewhere
      eOpenMode mode = create ? OPEN_CREATE : OPEN_READWRITE;
      if (fileopen(f.handle, mode, nullptr) != f.handle)
        return fail("open failed");
      ++f.opens;
      f.position = 0;
      if (create)
        f.bytes.clear();
      f.exists = true;
    } else if (op == 1) { // seek from the start, the position or the end; origin 7 stays
      const int whence = next() % 4;
      const long length = static_cast<long>(f.bytes.size());
      const long base = whence == 1 ? f.position : whence == 2 ? length : 0;
      const long to = whence == 3 ? f.position : number(16) % (length + 700);
      if (lseek2(f.handle, to - base + (whence == 3 ? 5 : 0), whence == 3 ? 7 : whence) != to)
        return fail("seek");
      f.position = to;
    } else if (op == 2) { // read
      unsigned n = static_cast<unsigned>(number(16) % 1700);
      std::string got(n, '\0');
      int r = read2(f.handle, got.data(), n);
      long have = std::max(0L, static_cast<long>(f.bytes.size()) - f.position);
      long want = std::min(static_cast<long>(n), have);
      if (r != want)
        return fail("read " + std::to_string(r) + " of " + std::to_string(want));
      if (want > 0 && got.compare(0, static_cast<size_t>(want), f.bytes,
                                  static_cast<size_t>(f.position), static_cast<size_t>(want)) != 0)
        return fail("read bytes differ");
      f.position += want;
    } else if (op == 3) { // write
      unsigned n = 1 + static_cast<unsigned>(number(16) % 1700);
      std::string data(n, static_cast<char>(next()));
      for (unsigned i = 0; i < n; i += 97)
        data[i] = static_cast<char>(next());
      if (write2(f.handle, data.data(), n) != static_cast<int>(n))
        return fail("write");
      if (f.bytes.size() < static_cast<size_t>(f.position) + n)
        f.bytes.resize(static_cast<size_t>(f.position) + n, '\0');
      f.bytes.replace(static_cast<size_t>(f.position), n, data);
      f.position += n;
    } else if (op == 4) { // set length
      long length = number(16) % 5000;
      if (chsize2(f.handle, length) != 0)
        return fail("chsize");
      f.bytes.resize(static_cast<size_t>(length), '\0');
    } else if (op == 5 || op == 6) { // close, or unregister and register again
      if (op == 5) {
        if (close2(f.handle) != 0)
          return fail("close");
        --f.opens;
      } else {
        if (!unregister_file(f.handle))
          return fail("unregister");
        f.opens = 0;
        f.handle = register_file(f.wide.c_str(), FILETYPE_ANY, true);
        if (!f.handle)
          return fail("register");
      }
      if (f.opens == 0 && disk(f.path) != f.bytes)
        return fail("the bytes on disk differ from the model");
    }
    if (f.opens > 0 && (filelength2(f.handle) != static_cast<long>(f.bytes.size()) ||
                        tell2(f.handle) != f.position))
      return fail("length or position");
    log.str("");
  }
  for (File& f : files) {
    while (f.opens > 0) {
      if (close2(f.handle) != 0)
        return "final close failed";
      --f.opens;
    }
    if (f.exists && disk(f.path) != f.bytes)
      return "the bytes on disk differ from the model at the end";
  }
  return "";
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_FILES_MODEL_H
