//===- frame/service_set.h - The services of one InstanceData ---*- C++ -*-===//
#ifndef QXUTIL_FRAME_SERVICE_SET_H
#define QXUTIL_FRAME_SERVICE_SET_H

// The frame builds and tears down per-context sets but does not know which
// services they hold: these two calls are defined above every subsystem, in
// src/services/service_set.cpp, the one place that knows them all.

class InstanceData;

namespace qx {

/// CreateServices - creates the library's services and installs them in
/// `data`, in creation order, stopping at the first that cannot be created
/// (the later ones are then absent). Returns `data`, or null when the
/// string-normalizer manager failed (the partly filled set stays installed
/// and the next GetInstanceData() call finds it).
InstanceData* CreateServices(InstanceData* data);

/// DestroyServices - deletes the services held in `data`, in destruction
/// order. Their slots are not cleared.
void DestroyServices(InstanceData* data);

} // namespace qx

#endif // QXUTIL_FRAME_SERVICE_SET_H
