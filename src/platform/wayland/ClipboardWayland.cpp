// The clipboard of a Wayland desktop for a program without focus, through wlr-data-control.
// Reads go through the shared connection; what this process copies is served by a thread of
// its own, on a connection of its own, until another program copies.

#include "DesktopToolsWayland.h"
#include "WaylandConnection.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <future>
#include <thread>

namespace zelmor::platform::wayland {

namespace {

// How long an owner may take to hand its data over, and the compositor to take ours.
constexpr int kTransferTimeoutMs = 3000;

struct Offer
{
    zwlr_data_control_offer_v1* offer = nullptr;
    std::vector<std::string> types;
};

// The offers a data device announced, and which one is the clipboard's.
struct Offers
{
    std::vector<std::unique_ptr<Offer>> all;
    Offer* selection = nullptr;

    ~Offers()
    {
        for (const auto& o : all)
            zwlr_data_control_offer_v1_destroy(o->offer);
    }
    // Every offer but the clipboard's is of no use any more.
    void keepSelection(zwlr_data_control_offer_v1* kept)
    {
        selection = nullptr;
        for (auto it = all.begin(); it != all.end();) {
            if ((*it)->offer == kept) {
                selection = it++->get();
                continue;
            }
            zwlr_data_control_offer_v1_destroy((*it)->offer);
            it = all.erase(it);
        }
    }
};

const zwlr_data_control_offer_v1_listener offerListener = {
    [](void* data, zwlr_data_control_offer_v1*, const char* type) {
        static_cast<Offer*>(data)->types.emplace_back(type);
    },
};

const zwlr_data_control_device_v1_listener deviceListener = {
    [](void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* offer) {
        auto o = std::make_unique<Offer>();
        o->offer = offer;
        zwlr_data_control_offer_v1_add_listener(offer, &offerListener, o.get());
        static_cast<Offers*>(data)->all.push_back(std::move(o));
    },
    [](void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* offer) {
        static_cast<Offers*>(data)->keepSelection(offer);
    },
    [](void*, zwlr_data_control_device_v1*) {},
    [](void*, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1*) {},
};

// Runs `read` on the clipboard's offer as the compositor tells it to a new device.
template <typename Read> void readSelection(Read read)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c || !c->dataControl() || !c->seat()) return;
    std::lock_guard<std::mutex> lock(c->mutex);
    Offers offers;
    zwlr_data_control_device_v1* device =
        zwlr_data_control_manager_v1_get_data_device(c->dataControl(), c->seat());
    zwlr_data_control_device_v1_add_listener(device, &deviceListener, &offers);
    if (c->roundtrip() && offers.selection) read(*c, *offers.selection);
    zwlr_data_control_device_v1_destroy(device);
}

// Everything until the writer closes its end, or nullopt when it takes too long.
std::optional<std::string> readAll(int fd)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(kTransferTimeoutMs);
    std::string data;
    char buffer[65536];
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd p{fd, POLLIN, 0};
        if (left <= 0 || poll(&p, 1, int(left)) <= 0) return std::nullopt;
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n == 0) return data;
        if (n < 0 && errno != EINTR && errno != EAGAIN) return std::nullopt;
        if (n > 0) data.append(buffer, std::size_t(n));
    }
}

void writeAll(int fd, const std::string& data)
{
    for (std::size_t done = 0; done < data.size();) {
        const ssize_t n = write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return; // the reader went away
        done += std::size_t(n);
    }
}

// One copy of this process, served on a connection of its own until it is replaced.
class Keeper
{
public:
    explicit Keeper(std::vector<ClipboardFormat> formats) : m_formats(std::move(formats)) {}

    // On the keeper's thread: takes the clipboard, tells `taken`, then serves it.
    void run(std::promise<bool> taken)
    {
        // A reader that leaves early must not end the process.
        sigset_t pipeSignal;
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
        const bool took = take();
        taken.set_value(took);
        while (took && !m_cancelled && wl_display_dispatch(m_display) >= 0) {
        }
        release();
    }

    void bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface)
    {
        if (std::strcmp(interface, wl_seat_interface.name) == 0 && !m_seat)
            m_seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        else if (std::strcmp(interface, zwlr_data_control_manager_v1_interface.name) == 0)
            m_manager = static_cast<zwlr_data_control_manager_v1*>(
                wl_registry_bind(registry, name, &zwlr_data_control_manager_v1_interface, 1));
    }
    void cancel() { m_cancelled = true; }

    void send(const char* type, int fd)
    {
        const auto f =
            std::find_if(m_formats.begin(), m_formats.end(),
                         [type](const ClipboardFormat& f) { return f.mimeType == type; });
        if (f != m_formats.end()) writeAll(fd, f->data);
        close(fd);
    }

private:
    bool take();

    void release()
    {
        if (!m_display) return;
        m_offers.keepSelection(nullptr);
        if (m_device) zwlr_data_control_device_v1_destroy(m_device);
        if (m_source) zwlr_data_control_source_v1_destroy(m_source);
        if (m_manager) zwlr_data_control_manager_v1_destroy(m_manager);
        if (m_seat) wl_proxy_destroy(reinterpret_cast<wl_proxy*>(m_seat));
        wl_registry_destroy(m_registry);
        wl_display_disconnect(m_display);
    }

    std::vector<ClipboardFormat> m_formats;
    wl_display* m_display = nullptr;
    wl_registry* m_registry = nullptr;
    wl_seat* m_seat = nullptr;
    zwlr_data_control_manager_v1* m_manager = nullptr;
    zwlr_data_control_source_v1* m_source = nullptr;
    zwlr_data_control_device_v1* m_device = nullptr;
    Offers m_offers;
    bool m_cancelled = false;
};

Keeper& keeperOf(void* data)
{
    return *static_cast<Keeper*>(data);
}

const wl_registry_listener keeperRegistryListener = {
    [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
        keeperOf(data).bindGlobal(registry, name, interface);
    },
    [](void*, wl_registry*, uint32_t) {},
};

const zwlr_data_control_source_v1_listener sourceListener = {
    [](void* data, zwlr_data_control_source_v1*, const char* type, int32_t fd) {
        keeperOf(data).send(type, fd);
    },
    [](void* data, zwlr_data_control_source_v1*) { keeperOf(data).cancel(); },
};

bool Keeper::take()
{
    m_display = wl_display_connect(nullptr);
    if (!m_display) return false;
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &keeperRegistryListener, this);
    if (wl_display_roundtrip(m_display) < 0 || !m_manager || !m_seat) return false;
    m_source = zwlr_data_control_manager_v1_create_data_source(m_manager);
    zwlr_data_control_source_v1_add_listener(m_source, &sourceListener, this);
    for (const ClipboardFormat& f : m_formats)
        zwlr_data_control_source_v1_offer(m_source, f.mimeType.c_str());
    m_device = zwlr_data_control_manager_v1_get_data_device(m_manager, m_seat);
    zwlr_data_control_device_v1_add_listener(m_device, &deviceListener, &m_offers);
    zwlr_data_control_device_v1_set_selection(m_device, m_source);
    return wl_display_roundtrip(m_display) >= 0;
}

} // namespace

bool clipboardReachable()
{
    const WaylandConnection* c = WaylandConnection::shared();
    return c && c->dataControl() && c->seat();
}

bool setClipboardContent(const std::vector<ClipboardFormat>& formats)
{
    if (formats.empty() || !clipboardReachable()) return false;
    std::promise<bool> taken;
    std::future<bool> answer = taken.get_future();
    std::thread([keeper = std::make_shared<Keeper>(formats), taken = std::move(taken)]() mutable {
        keeper->run(std::move(taken));
    }).detach();
    return answer.wait_for(std::chrono::milliseconds(kTransferTimeoutMs)) ==
               std::future_status::ready &&
           answer.get();
}

std::vector<std::string> clipboardTypes()
{
    std::vector<std::string> types;
    readSelection([&types](WaylandConnection&, const Offer& o) { types = o.types; });
    return types;
}

std::optional<std::string> clipboardData(const std::string& mimeType)
{
    std::optional<std::string> data;
    readSelection([&](WaylandConnection& c, const Offer& o) {
        if (std::find(o.types.begin(), o.types.end(), mimeType) == o.types.end()) return;
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) return;
        zwlr_data_control_offer_v1_receive(o.offer, mimeType.c_str(), fds[1]);
        wl_display_flush(c.display());
        close(fds[1]);
        data = readAll(fds[0]);
        close(fds[0]);
    });
    return data;
}

} // namespace zelmor::platform::wayland
