//===- qxutil/qxutil.h - The whole interface ---------------------*- C++ -*-===//
#ifndef QXUTIL_QXUTIL_H
#define QXUTIL_QXUTIL_H

#include "qxutil/containers.h"
#include "qxutil/files.h"
#include "qxutil/frame.h"
#include "qxutil/geometry.h"
#include "qxutil/locale.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"
#include "qxutil/wintypes.h"

#endif // QXUTIL_QXUTIL_H
