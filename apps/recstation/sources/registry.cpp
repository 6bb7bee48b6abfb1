// The sources in the order of the help: all that the program knows of them.
#include "sources/offeredsource.h"

namespace RecStation {

using Offer = std::shared_ptr<OfferedSource>();  // each in its source's folder
Offer offerSim, offerFeed, offerSweep, offerBearings, offerNmea, offerIq, offerRtlTcp, offerGpsd, offerKraken, offerRig,
    offerSoapy;

std::vector<std::shared_ptr<OfferedSource>> offeredSources()
{
    constexpr Offer* Offers[] = {
        offerSim,
        offerFeed,
        offerSweep,
        offerBearings,
        offerNmea,
#if defined(RECSTATION_HAS_IQ)
        offerIq,
#endif
#if defined(RECSTATION_HAS_RTLTCP)
        offerRtlTcp,
#endif
#if defined(RECSTATION_HAS_LIVE)
        offerGpsd,
        offerKraken,
        offerRig,
#endif
#if defined(RECSTATION_HAS_SOAPY)
        offerSoapy,
#endif
    };
    std::vector<std::shared_ptr<OfferedSource>> all;
    for (Offer* offer : Offers) {
        all.push_back(offer());
    }
    return all;
}

}  // namespace RecStation
