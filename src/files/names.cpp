//===- files/names.cpp - Windows file names as text -----------------------===//
#include "files/names.h"

#include "platform/file_crt.h"

#include <cwchar>

namespace qx::files {

namespace {

// Append - appends `n` units of `s` to `out` (length *len, room `size`).
void Append(wchar_t* out, size_t* len, size_t size, const wchar_t* s, size_t n) {
  while (n-- && *len + 1 < size)
    out[(*len)++] = *s++;
  out[*len] = 0;
}

bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t'; }

wchar_t* NamePart(wchar_t* name) {
  const wchar_t* sep = LastSeparator(name);
  return sep ? name + (sep - name) + 1 : name;
}

} // namespace

wchar_t* CopyText(wchar_t* dst, const wchar_t* src, size_t size) {
  if (!dst || size == 0)
    return dst;
  size_t i = 0;
  if (src)
    for (; i + 1 < size && src[i]; ++i)
      dst[i] = src[i];
  dst[i] = 0;
  return dst;
}

const wchar_t* LastSeparator(const wchar_t* s) {
  const wchar_t* last = nullptr;
  for (; *s; ++s)
    if (IsSeparator(*s))
      last = s;
  return last;
}

void EnsureBackslash(wchar_t* s, size_t size) {
  size_t n = std::wcslen(s);
  if (n == 0 || IsSeparator(s[n - 1]) || n + 1 >= size)
    return;
  s[n] = L'\\';
  s[n + 1] = 0;
}

bool SameName(const wchar_t* a, const wchar_t* b) {
  for (;; ++a, ++b) {
    if (FoldCase(*a) != FoldCase(*b))
      return false;
    if (*a == 0)
      return true;
  }
}

bool SameNamePrefix(const wchar_t* s, const wchar_t* prefix) {
  for (; *prefix; ++s, ++prefix)
    if (FoldCase(*s) != FoldCase(*prefix))
      return false;
  return true;
}

void SplitFileName(wchar_t* path, wchar_t* namePart) {
  if (!path)
    return;
  wchar_t* name = NamePart(path);
  if (namePart) {
    const wchar_t* dot = std::wcsrchr(name, L'.');
    size_t baseLen = dot ? static_cast<size_t>(dot - name) : std::wcslen(name);
    if (baseLen > kNameUnits)
      baseLen = kNameUnits;
    size_t n = 0;
    for (; n < baseLen; ++n)
      namePart[n] = name[n];
    if (dot) {
      namePart[n++] = L'.';
      for (size_t i = 1; i <= 3 && dot[i]; ++i)
        namePart[n++] = dot[i];
    }
    namePart[n] = 0;
  }
  *name = 0;
}

void NormaliseForExtension(wchar_t* name) {
  wchar_t* part = NamePart(name);
  size_t skip = 0;
  while (IsBlank(part[skip]))
    ++skip;
  if (skip)
    std::wmemmove(part, part + skip, std::wcslen(part + skip) + 1);
  if (std::wcslen(part) > kNameUnits - 1)
    part[kNameUnits - 1] = 0;
}

void MakeExtension(wchar_t* name, const wchar_t* ext) {
  if (!name)
    return;
  if (!ext)
    ext = L"";
  if (*ext)
    NormaliseForExtension(name);
  wchar_t* part = NamePart(name);
  wchar_t* dot = std::wcsrchr(part, L'.');
  wchar_t* at = dot && IsDefaultExtension(dot) ? dot : part + std::wcslen(part);
  wchar_t* keep = at;
  while (keep > part && IsBlank(keep[-1]))
    --keep;
  size_t partLen = static_cast<size_t>(keep - part);
  size_t total = static_cast<size_t>(keep - name);
  size_t n = 0;
  for (; ext[n] && partLen + n < kNameUnits && total + n < kPathUnits - 1; ++n)
    keep[n] = ext[n];
  keep[n] = 0;
}

void Qualify(wchar_t* name) {
  if (!name)
    return;
  wchar_t out[kPathUnits];
  size_t n = 0, root;
  const wchar_t* p = name;
  size_t len = std::wcslen(name);
  if (len > 2 && IsSeparator(p[0]) && IsSeparator(p[1])) {
    Append(out, &n, kPathUnits, L"\\\\", 2); // one backslash, then the second separator
    p += 2;
    root = 2;
  } else {
    wchar_t drive = L'C';
    if (len >= 2 && p[1] == L':' &&
        ((p[0] >= L'A' && p[0] <= L'Z') || (p[0] >= L'a' && p[0] <= L'z'))) {
      drive = static_cast<wchar_t>(p[0] & ~0x20);
      p += 2;
    }
    wchar_t head[3] = {drive, L':', 0};
    Append(out, &n, kPathUnits, head, 2);
    root = 3;
    if (!IsSeparator(*p)) {
      wchar_t cwd[kPathUnits];
      if (qx::crt::_wgetdcwd(drive - L'A' + 1, cwd, static_cast<int>(kPathUnits)) &&
          std::wcslen(cwd) >= 2)
        Append(out, &n, kPathUnits, cwd + 2, std::wcslen(cwd + 2));
      if (n == 2 || out[n - 1] != L'\\')
        Append(out, &n, kPathUnits, L"\\", 1);
    }
  }
  while (*p) {
    if (IsSeparator(*p)) {
      if (out[n - 1] != L'\\')
        Append(out, &n, kPathUnits - 1, L"\\", 1);
      ++p;
      continue;
    }
    const wchar_t* end = p;
    while (*end && !IsSeparator(*end))
      ++end;
    size_t clen = static_cast<size_t>(end - p);
    if (clen == 1 && p[0] == L'.') {
      p = *end ? end + 1 : end;
    } else if (clen == 2 && p[0] == L'.' && p[1] == L'.') {
      if (n > root && out[n - 1] == L'\\')
        --n;
      while (n > root && out[n - 1] != L'\\')
        --n;
      if (n < root)
        n = root;
      out[n] = 0;
      p = *end ? end + 1 : end;
    } else {
      Append(out, &n, kPathUnits - 1, p, clen);
      p = end;
    }
  }
  std::wmemcpy(name, out, n + 1);
}

bool CalcRelative(const wchar_t* base, const wchar_t* target, wchar_t* out) {
  if (!base || !target || !out)
    return false;
  size_t tlen = std::wcslen(target);
  if (tlen >= 4 && !IsSeparator(target[0]) && target[1] != L':') {
    CopyText(out, target, kPathUnits);
    return true;
  }
  wchar_t b[kPathUnits];
  CopyText(b, base, kPathUnits);
  EnsureBackslash(b, kPathUnits);
  wchar_t prefix[kPathUnits] = {};
  size_t plen = 0;
  for (;;) {
    if (*b && SameNamePrefix(target, b)) {
      size_t n = 0;
      out[0] = 0;
      Append(out, &n, kPathUnits, prefix, plen);
      const wchar_t* rest = target + std::wcslen(b);
      Append(out, &n, kPathUnits, rest, std::wcslen(rest));
      return true;
    }
    size_t n = std::wcslen(b);
    if (n && IsSeparator(b[n - 1]))
      b[--n] = 0;
    while (n && !IsSeparator(b[n - 1]))
      --n;
    if (n == 0)
      break;
    b[n] = 0;
    Append(prefix, &plen, kPathUnits, L"..\\", 3);
  }
  CopyText(out, target, kPathUnits);
  return false;
}

bool FullFromRelative(const wchar_t* base, const wchar_t* relative, wchar_t* out) {
  if (!relative || !out)
    return false;
  bool absolute = IsSeparator(relative[0]) || (relative[0] && relative[1] == L':');
  wchar_t full[kPathUnits];
  size_t n = 0;
  full[0] = 0;
  if (!absolute && base && *base) {
    Append(full, &n, kPathUnits, base, std::wcslen(base));
    EnsureBackslash(full, kPathUnits);
    n = std::wcslen(full);
  }
  Append(full, &n, kPathUnits, relative, std::wcslen(relative));
  Qualify(full);
  CopyText(out, full, kPathUnits);
  return !absolute;
}

void PartialPath(const wchar_t* path, wchar_t* out, int size) {
  if (!out || size <= 0)
    return;
  size_t room = static_cast<size_t>(size);
  size_t len = std::wcslen(path);
  if (len < room) {
    std::wmemcpy(out, path, len + 1);
    return;
  }
  size_t head = len >= 3 && path[1] == L':' ? 3 : 0;
  for (size_t i = head; i < len; ++i) {
    if (!IsSeparator(path[i]))
      continue;
    size_t tail = len - i - 1; // after the separator
    if (head + 4 + tail < room) {
      size_t n = 0;
      Append(out, &n, room, path, head);
      Append(out, &n, room, L"...\\", 4);
      Append(out, &n, room, path + i + 1, tail);
      return;
    }
  }
  const wchar_t* sep = LastSeparator(path);
  CopyText(out, sep ? sep + 1 : path, static_cast<unsigned int>(room));
}

} // namespace qx::files
