#include "recording_services.h"

namespace qxtest {

namespace {
template <class Service, class Recorder>
void Replace(DestructionLog* log, std::vector<std::string>* order, const char* name) {
  Service* original = Service::Instance();
  if (!Service::Instance(new Recorder(log)))
    return;
  delete original;
  order->push_back(name);
}
} // namespace

std::vector<std::string> ReplaceWithRecorders(DestructionLog* log) {
  // The documented destruction order, restricted to the services built so far.
  std::vector<std::string> order;
  Replace<cErrorSystem, RecordingErrorSystem>(log, &order, "cErrorSystem");
  Replace<StringNormalizerManager, RecordingNormalizerManager>(log, &order,
                                                               "StringNormalizerManager");
  Replace<cCharsetInfo, RecordingCharsetInfo>(log, &order, "cCharsetInfo");
  Replace<cCharsetConverter, RecordingCharsetConverter>(log, &order, "cCharsetConverter");
  Replace<cLocaleInfo, RecordingLocaleInfo>(log, &order, "cLocaleInfo");
  Replace<cCheckEsc, RecordingCheckEsc>(log, &order, "cCheckEsc");
  return order;
}

} // namespace qxtest
