//===- qxutil/export.h - Marking the public interface -----------*- C++ -*-===//
//
// QXUTIL_API marks each declaration of the public interface. The library is
// built with hidden visibility, so only what carries this mark is exported
// from the shared library; everything else stays private to it and can
// neither replace nor be replaced by a host's symbol of the same name.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_EXPORT_H
#define QXUTIL_EXPORT_H

#if defined(_WIN32)
#if defined(QXUTIL_BUILDING)
#define QXUTIL_API __declspec(dllexport)
#else
#define QXUTIL_API __declspec(dllimport)
#endif
#else
#define QXUTIL_API __attribute__((visibility("default")))
#endif

#endif // QXUTIL_EXPORT_H
