#pragma once

#include "model/bson/local_times.h"
#include "model/bson/shared_texts.h"
#include "model/bson/similar_objects.h"

namespace bson_utils {

/// What the readers of one query's documents share, since these are alike: made before the first
/// document, gone after the last. Costs next to nothing for a document or two.
///
/// Changes no result. One thread at a time.
struct query_memory {
    local_times times;
    shared_texts texts;
    similar_objects objects;
};

} // namespace bson_utils
