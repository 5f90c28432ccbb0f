#pragma once

#include <string_view>

namespace fuzz {

/// A server on 127.0.0.1 that plays a script instead of reading what it is asked, in the thread of
/// the client: whenever the client is about to receive, the next piece is sent first, and after the
/// last one the connection is closed. One object in a process.
class ScriptedRedis {
public:
    ScriptedRedis();
    ~ScriptedRedis();
    ScriptedRedis(const ScriptedRedis&) = delete;
    ScriptedRedis& operator=(const ScriptedRedis&) = delete;

    int port() const { return m_port; }

    /// Begins a script, of pieces with a byte 0xFF between them. An empty piece closes the
    /// connection too; the next connection goes on with the rest.
    void play(std::string_view script);

    /// For the call to recv() that goes through here first.
    void sendPiece();

private:
    void acceptLatest();
    void close();

    int m_listener;
    int m_port;
    int m_client = -1;
    std::string_view m_script;
};

} // namespace fuzz
