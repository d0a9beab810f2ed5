#pragma once

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/transfer/person_card.hpp"

namespace ox::vcard {

// The card of a stored person once a file that tells of some properties alone has told them: those
// are the file's, also where it has nothing, everything else is as it is stored. A property that
// the store has nothing of is the file's in any case, and so are categories that it has any of.
PersonCard completedCard(PersonCard&& person, const PropertyBag& stored, const Data& picture,
                         CategoriesAs categoriesAs);

}  // namespace ox::vcard
