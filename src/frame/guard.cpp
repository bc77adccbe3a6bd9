//===- frame/guard.cpp - Critical sections --------------------------------===//
#include "qxutil/frame.h"

#include "platform/threads.h"

using namespace qx::win;

QXGuard::QXGuard() { InitializeCriticalSection(&section_); }

QXGuard::~QXGuard() { DeleteCriticalSection(&section_); }

void QXGuard::Lock() { EnterCriticalSection(&section_); }

void QXGuard::Unlock() { LeaveCriticalSection(&section_); }
