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
    /// State of an element, a queue or all of them. Travels by name only, never by number.
    enum class status : int {
        NONE = 0, ///< Nothing has been done.
        DONE = 1, ///< Done.
        WAIT = 2, ///< Waits.
        FAIL = 3, ///< Failed.
    };

    /// One element of a queue, keyed by its element id.
    struct element {
        /// Content of the element.
        QJsonObject data;
        /// Kind of element, of the host's choice.
        QString type;
        /// Identifier of the stored downlink command that the element stands for.
        QString db_id;
        /// State of the element.
        enum status status = dl_queues::status::NONE;
        /// Number of repetitions.
        int repeat = 0;
    };

    /// One named queue.
    struct queue {
        /// Element id to element.
        QMap<QString, element> elements;
        /// Number of repetitions.
        int repeat = 0;
        /// Time-out in the host's own unit.
        int timeout = 0;
        /// Where the queue starts, in the host's own count.
        int start_from = 0;
        /// State of the queue.
        enum status status = dl_queues::status::NONE;
    };

    /// Queue name to queue.
    QMap<QString, queue> dl;
    /// The whole set is locked for processing.
    bool lock = false;
    /// State of the whole set.
    enum status status = status::NONE;
};

} // namespace model
