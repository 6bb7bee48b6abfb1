// The sources in the order of the help: all that the program knows of them.
#include "sources/registry.h"

namespace RecStation {

using Offer = std::shared_ptr<OfferedSource>();  // each in its source's folder
Offer offerSim, offerFeed, offerSweep, offerBearings, offerNmea;
#if defined(RECSTATION_HAS_IQ)
Offer offerIq;
#endif
#if defined(RECSTATION_HAS_LIVE)
Offer offerGpsd, offerKraken, offerRig;
#endif
#if defined(RECSTATION_HAS_RTLTCP)
Offer offerRtlTcp;
#endif
#if defined(RECSTATION_HAS_SOAPY)
Offer offerSoapy;
#endif

std::vector<std::shared_ptr<OfferedSource>> offeredSources()
{
    std::vector<std::shared_ptr<OfferedSource>> all = {offerSim(), offerFeed(), offerSweep(), offerBearings(),
                                                       offerNmea()};
#if defined(RECSTATION_HAS_IQ)
    all.push_back(offerIq());
#endif
#if defined(RECSTATION_HAS_RTLTCP)
    all.push_back(offerRtlTcp());
#endif
#if defined(RECSTATION_HAS_LIVE)
    all.push_back(offerGpsd());
    all.push_back(offerKraken());
    all.push_back(offerRig());
#endif
#if defined(RECSTATION_HAS_SOAPY)
    all.push_back(offerSoapy());
#endif
    return all;
}

}  // namespace RecStation
