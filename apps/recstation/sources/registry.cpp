// The sources in the order of the help: all that the program knows of them.
#include "sources/registry.h"

namespace RecStation {

using Offer = std::shared_ptr<OfferedSource>();  // each in its source's folder
Offer offerSim, offerFeed, offerSweep, offerBearings, offerNmea;
#if defined(RECSTATION_HAS_IQ)
Offer offerIq;
#endif
#if defined(RECSTATION_HAS_LIVE)
Offer offerGpsd;
#endif

std::vector<std::shared_ptr<OfferedSource>> offeredSources()
{
    return
    {
        offerSim(), offerFeed(), offerSweep(), offerBearings(), offerNmea(),
#if defined(RECSTATION_HAS_IQ)
            offerIq(),
#endif
#if defined(RECSTATION_HAS_LIVE)
            offerGpsd(),
#endif
    };
}

}  // namespace RecStation
