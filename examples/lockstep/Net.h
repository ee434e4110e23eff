/// Sockets and timers. Only Net.cpp sees Asio, which takes long to compile.
///
/// Everything is bound to 127.0.0.1, so that a port is a whole address; the system chooses the ports. One
/// thread runs the loop, and every callback is called by it, never from inside a call of these classes. A
/// socket that cannot be opened is a `std::system_error`; what fails later ends the connection or loses the
/// datagram, as networks do.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace lockstep {

class Loop {
public:
    Loop();
    ~Loop();

    void run(); ///< returns after `stop`
    void stop();
    void after(std::chrono::milliseconds delay, std::function<void()> act);

    struct Impl;
    Impl& impl() { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};

/// One end of a TCP connection.
class Connection {
public:
    using Received = std::function<void(std::string_view bytes)>;
    using Closed = std::function<void()>;

    virtual ~Connection() = default;

    /// From now on, what arrives is handed out, and the end is told once, whoever wanted it.
    virtual void start(Received received, Closed closed) = 0;
    virtual void send(std::string_view bytes) = 0;
    /// Sends what is still to be sent, and no longer looks at what arrives.
    virtual void close() = 0;
};

std::shared_ptr<Connection> connect(Loop& loop, uint16_t port);

class Listener {
public:
    using Accepted = std::function<void(std::shared_ptr<Connection>)>;

    Listener(Loop& loop, Accepted accepted);
    ~Listener();
    uint16_t port() const;

    struct Impl;

private:
    std::shared_ptr<Impl> impl_;
};

class Datagrams {
public:
    using Received = std::function<void(std::string_view bytes, uint16_t port)>;

    /// @param loss of 100 datagrams to send, how many are thrown away instead: by dice, with @p seed
    Datagrams(Loop& loop, uint32_t loss, uint32_t seed, Received received);
    ~Datagrams();
    uint16_t port() const;
    void send(std::string_view bytes, uint16_t port);
    uint32_t thrownAway() const;

    struct Impl;

private:
    std::shared_ptr<Impl> impl_;
};

} // namespace lockstep
