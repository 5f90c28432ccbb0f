#pragma once

namespace host {

class Session;

/// Looks at settings, plug-in file and servers, and shows what it finds. Changes nothing: of the
/// plug-in it opens no store. True if nothing was worse than a note.
bool runDoctor(Session& session);

} // namespace host
