#include "examples/lockstep/Net.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <array>
#include <random>
#include <string>
#include <utility>

namespace lockstep {

using asio::ip::tcp;
using asio::ip::udp;
using std::error_code;

namespace {

asio::ip::address_v4 here() {
    return asio::ip::address_v4::loopback();
}

} // namespace

// ---- Loop ----

struct Loop::Impl {
    asio::io_context context{1};
};

Loop::Loop() : impl_(std::make_unique<Impl>()) {}
Loop::~Loop() = default;

void Loop::run() {
    const auto untilStopped = asio::make_work_guard(impl_->context);
    impl_->context.run();
}

void Loop::stop() {
    impl_->context.stop();
}

void Loop::after(std::chrono::milliseconds delay, std::function<void()> act) {
    auto timer = std::make_shared<asio::steady_timer>(impl_->context, delay);
    timer->async_wait([timer, act = std::move(act)](error_code error) {
        if (!error) {
            act();
        }
    });
}

// ---- TCP ----

namespace {

class TcpConnection : public Connection, public std::enable_shared_from_this<TcpConnection> {
public:
    explicit TcpConnection(tcp::socket socket) : socket_(std::move(socket)), timer_(socket_.get_executor()) {
        error_code ignored;
        (void)socket_.set_option(tcp::no_delay(true), ignored); // small messages, and each one now
    }

    void start(Received received, Closed closed) override {
        received_ = std::move(received);
        closed_ = std::move(closed);
        read();
    }

    void send(std::string_view bytes) override {
        if (closing_) {
            return;
        }
        if (waiting_.size() + bytes.size() > MOST_WAITING) {
            abort(); // it does not read: it must not cost this side its memory
            return;
        }
        waiting_ += bytes;
        write();
    }

    void close() override {
        if (closing_) {
            return;
        }
        closing_ = true;
        timer_.expires_after(GRACE);
        timer_.async_wait([self = shared_from_this()](error_code) { self->abort(); });
        write();
    }

private:
    static constexpr size_t MOST_WAITING = 1 << 20;
    static constexpr std::chrono::seconds GRACE{2}; // for the other side to close, too

    void read() {
        socket_.async_read_some(asio::buffer(buffer_),
                                [self = shared_from_this()](error_code error, size_t size) {
                                    if (error) {
                                        self->ended();
                                        return;
                                    }
                                    if (!self->closing_) {
                                        self->received_(std::string_view(self->buffer_.data(), size));
                                    }
                                    self->read();
                                });
    }

    void write() {
        error_code ignored;
        if (!sending_.empty()) {
            return; // the handler below goes on
        }
        if (waiting_.empty()) {
            if (closing_) {
                (void)socket_.shutdown(tcp::socket::shutdown_send, ignored);
            }
            return;
        }
        sending_.swap(waiting_);
        asio::async_write(socket_, asio::buffer(sending_),
                          [self = shared_from_this()](error_code error, size_t) {
                              self->sending_.clear();
                              if (error) {
                                  self->abort();
                              } else {
                                  self->write();
                              }
                          });
    }

    /// Ends the read that is under way, and with it the connection.
    void abort() {
        error_code ignored;
        (void)socket_.close(ignored);
    }

    void ended() {
        closing_ = true;
        received_ = nullptr;
        timer_.cancel();
        abort();
        if (const Closed closed = std::exchange(closed_, nullptr)) {
            closed();
        }
    }

    tcp::socket socket_;
    asio::steady_timer timer_;
    std::array<char, 4096> buffer_{};
    std::string waiting_; // to be sent when
    std::string sending_; // this is out
    bool closing_ = false;
    Received received_;
    Closed closed_;
};

} // namespace

std::shared_ptr<Connection> connect(Loop& loop, uint16_t port) {
    tcp::socket socket(loop.impl().context);
    socket.connect({here(), port});
    return std::make_shared<TcpConnection>(std::move(socket));
}

struct Listener::Impl : std::enable_shared_from_this<Impl> {
    Impl(Loop& loop, Accepted act) : acceptor(loop.impl().context, {here(), 0}), accepted(std::move(act)) {}

    void accept() {
        acceptor.async_accept([self = shared_from_this()](error_code error, tcp::socket socket) {
            if (error == asio::error::operation_aborted || !self->acceptor.is_open()) {
                return;
            }
            if (!error) {
                self->accepted(std::make_shared<TcpConnection>(std::move(socket)));
            }
            self->accept();
        });
    }

    tcp::acceptor acceptor;
    Accepted accepted;
};

Listener::Listener(Loop& loop, Accepted accepted) : impl_(std::make_shared<Impl>(loop, std::move(accepted))) {
    impl_->accept();
}

Listener::~Listener() {
    error_code ignored;
    (void)impl_->acceptor.close(ignored);
}

uint16_t Listener::port() const {
    return impl_->acceptor.local_endpoint().port();
}

// ---- UDP ----

struct Datagrams::Impl : std::enable_shared_from_this<Impl> {
    Impl(Loop& loop, uint32_t lossInHundred, uint32_t seed, Received act)
        : socket(loop.impl().context, {here(), 0}), loss(lossInHundred), dice(seed),
          received(std::move(act)) {}

    void receive() {
        socket.async_receive_from(
            asio::buffer(buffer), sender, [self = shared_from_this()](error_code error, size_t size) {
                if (error == asio::error::operation_aborted || !self->socket.is_open()) {
                    return;
                }
                if (!error) { // another error tells of a datagram sent to somebody who has gone
                    self->received(std::string_view(self->buffer.data(), size), self->sender.port());
                }
                self->receive();
            });
    }

    udp::socket socket;
    udp::endpoint sender;
    std::array<char, 65536> buffer{}; // the largest datagram
    uint32_t loss;
    uint32_t thrownAway = 0;
    std::minstd_rand dice;
    Received received;
};

Datagrams::Datagrams(Loop& loop, uint32_t loss, uint32_t seed, Received received)
    : impl_(std::make_shared<Impl>(loop, loss, seed, std::move(received))) {
    impl_->receive();
}

Datagrams::~Datagrams() {
    error_code ignored;
    (void)impl_->socket.close(ignored);
}

uint16_t Datagrams::port() const {
    return impl_->socket.local_endpoint().port();
}

void Datagrams::send(std::string_view bytes, uint16_t port) {
    if (impl_->dice() % 100 < impl_->loss) {
        ++impl_->thrownAway;
        return;
    }
    error_code ignored; // a datagram that does not get away is as good as one that is lost
    impl_->socket.send_to(asio::buffer(bytes.data(), bytes.size()), {here(), port}, 0, ignored);
}

uint32_t Datagrams::thrownAway() const {
    return impl_->thrownAway;
}

} // namespace lockstep
