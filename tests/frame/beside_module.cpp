// A stand-in product module for the beside-module loader: it only says who
// it is.
extern "C" __attribute__((visibility("default"))) int QxTestBesideModuleId() { return 4711; }
