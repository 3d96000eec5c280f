#include "app/unfinished_offer.h"

namespace marlet {

UnfinishedOffer UnfinishedOffer::of(int queued, int corrected) {
    const int all = queued + corrected;
    UnfinishedOffer offer{.queued = queued, .corrected = corrected, .names = {}, .sentence = {}};
    offer.sentence = std::to_string(all) +
                     (all == 1 ? " file from last time is" : " files from last time are") +
                     " still waiting";
    if (corrected == 0)
        offer.sentence += " in the queue.";
    else if (queued == 0)
        offer.sentence += ", corrected in Review.";
    else
        offer.sentence += ": " + std::to_string(queued) + " in the queue, " +
                          std::to_string(corrected) + " corrected in Review.";
    return offer;
}

}  // namespace marlet
