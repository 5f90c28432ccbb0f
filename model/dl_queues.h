#pragma once

#include <QJsonObject>
#include <QMap>
#include <QString>

namespace model {

/// The complete downlink-queue state of one device: named queues, each holding named elements.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
/// The enumeration and a member share the name `status`: write `enum model::dl_queues::status` for
/// the type; `model::dl_queues::status::WAIT` needs no more.
struct dl_queues {
    /// Travels by name only, never by number.
    enum class status : int {
        NONE = 0,
        DONE = 1,
        WAIT = 2,
        FAIL = 3,
    };

    /// One element of a queue, keyed by its element id.
    struct element {
        QJsonObject data;
        QString type;
        /// Identifier of the stored downlink command that the element stands for.
        QString db_id;
        enum status status = dl_queues::status::NONE;
        int repeat = 0;
    };

    /// One named queue.
    struct queue {
        /// Element id to element.
        QMap<QString, element> elements;
        int repeat = 0;
        int timeout = 0;
        int start_from = 0;
        enum status status = dl_queues::status::NONE;
    };

    /// Queue name to queue.
    QMap<QString, queue> dl;
    /// The whole set is locked for processing.
    bool lock = false;
    enum status status = status::NONE;
};

} // namespace model
