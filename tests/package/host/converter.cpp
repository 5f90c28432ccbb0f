#include "model/model_convertors.h"

#include <iostream>

/// Uses the records' JSON conversions of the installed library: 0 if they do their work.
int main() {
    model::dl_queues queues;
    queues.lock = true;
    const QJsonObject json = model_convertors::toJson(queues);
    if (!model_convertors::fromJson<model::dl_queues>(json).lock) {
        std::cerr << "the queues came back unlocked\n";
        return 1;
    }
    return 0;
}
