#include "emulated_unit.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace zenta::testing {

namespace {

// Units alive at once, each at its own port and address of bus 1.
constexpr int kPorts = 8;
constexpr std::uint8_t kOut = 0x01;
constexpr std::uint8_t kIn = 0x81;

std::string hex(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  for (std::uint8_t b : bytes) text += {"0123456789ABCDEF"[b >> 4], "0123456789ABCDEF"[b & 15]};
  return text;
}

// umockdev's preload library follows one test bed per process, so the
// units alive at once share it; the last one gone takes it down.
struct SharedBus {
  std::mutex mutex;
  UMockdevTestbed* testbed = nullptr;
  std::array<bool, kPorts> used{};

  // The test bed and a free port.
  std::pair<UMockdevTestbed*, int> join() {
    std::lock_guard lock(mutex);
    int port = 0;
    while (port < kPorts && used[static_cast<std::size_t>(port)]) ++port;
    if (port == kPorts) throw std::runtime_error("too many emulated units at once");
    used[static_cast<std::size_t>(port)] = true;
    if (testbed == nullptr) testbed = umockdev_testbed_new();
    return {testbed, port + 1};
  }
  void leave(int port) {
    std::lock_guard lock(mutex);
    used[static_cast<std::size_t>(port - 1)] = false;
    if (std::find(used.begin(), used.end(), true) != used.end()) return;
    g_object_unref(testbed);
    testbed = nullptr;
  }
};

SharedBus& shared_bus() {
  static SharedBus bus;
  return bus;
}

// Device, configuration, interface and two endpoint descriptors, as the
// kernel shows them in sysfs and in the device node. The serial number is
// string 3 when there is one.
std::vector<std::uint8_t> descriptors(std::uint16_t vendor, std::uint16_t product,
                                      EndpointKind kind, bool serial) {
  const std::uint8_t type = kind == EndpointKind::kInterrupt ? 0x03 : 0x02;
  const std::uint8_t interval = kind == EndpointKind::kInterrupt ? 1 : 0;
  return {// device: USB 2.0, 64-byte control packets, one configuration
          0x12, 0x01, 0x00, 0x02, 0x00, 0x00, 0x00, 0x40, std::uint8_t(vendor & 0xFF),
          std::uint8_t(vendor >> 8), std::uint8_t(product & 0xFF), std::uint8_t(product >> 8), 0x00,
          0x01, 0x00, 0x00, std::uint8_t(serial ? 3 : 0), 0x01,
          // configuration 1, 32 bytes in all, one interface
          0x09, 0x02, 0x20, 0x00, 0x01, 0x01, 0x00, 0x80, 0x32,
          // interface 0, two endpoints, vendor class
          0x09, 0x04, 0x00, 0x00, 0x02, 0xFF, 0x00, 0x00, 0x00,
          // OUT and IN endpoints
          0x07, 0x05, kOut, type, 0x40, 0x00, interval, 0x07, 0x05, kIn, type, 0x40, 0x00,
          interval};
}

// A transfer submitted through one opening of the device node.
struct Urb {
  UMockdevIoctlData* urb = nullptr;
  UMockdevIoctlData* buffer = nullptr;
  UMockdevIoctlClient* client = nullptr;  // the opening, referenced
  void release() const {
    if (buffer != nullptr) g_object_unref(buffer);
    g_object_unref(urb);
    g_object_unref(client);
  }
  usbdevfs_urb* fields() const { return reinterpret_cast<usbdevfs_urb*>(urb->data); }
  std::uint8_t endpoint() const { return fields()->endpoint; }
};

// A string descriptor: English as the only language (string 0), or the
// text in UTF-16LE.
std::vector<std::uint8_t> string_descriptor(int index, const std::string& serial) {
  if (index == 0) return {4, 0x03, 0x09, 0x04};
  std::vector<std::uint8_t> bytes{std::uint8_t(2 + 2 * serial.size()), 0x03};
  for (char c : serial) bytes.insert(bytes.end(), {static_cast<std::uint8_t>(c), 0});
  return bytes;
}

constexpr std::uint8_t kGetDescriptor = 0x06;
constexpr std::uint8_t kStringDescriptor = 0x03;

}  // namespace

struct EmulatedUnit::Impl {
  sim::SimUnit& unit;
  unsigned char urb_type;  // of both data endpoints
  std::string serial;
  UMockdevTestbed* testbed = nullptr;
  int port = 0;
  std::string sys_path, dev_node;  // inside the test bed
  UMockdevIoctlBase* handler = nullptr;
  std::string node_path, socket_path;
  Faults faults;
  Seen seen;

  mutable std::mutex mutex;
  std::deque<Reply> in_buffer;  // replies the host has not fetched
  std::vector<Urb> pending;     // submitted, not done
  std::deque<Urb> done;         // done, waiting to be reaped
  bool out_halted = false, in_halted = false, gone = false;
  int exchanges = 0;
  bool late_held = false;
  Reply late_reply{};

  Impl(sim::SimUnit& u, EndpointKind kind, std::string s)
      : unit(u),
        urb_type(kind == EndpointKind::kInterrupt ? USBDEVFS_URB_TYPE_INTERRUPT
                                                  : USBDEVFS_URB_TYPE_BULK),
        serial(std::move(s)) {}

  // Takes the transfer the client submitted: its fields and data buffer.
  static Urb take(UMockdevIoctlClient* client, UMockdevIoctlData* data) {
    const auto length =
        static_cast<gsize>(reinterpret_cast<usbdevfs_urb*>(data->data)->buffer_length);
    Urb urb{data,
            umockdev_ioctl_data_resolve(data, offsetof(usbdevfs_urb, buffer), length, nullptr),
            static_cast<UMockdevIoctlClient*>(g_object_ref(client))};
    umockdev_ioctl_client_complete(client, 0, 0);
    return urb;
  }

  void finish(Urb urb, int status, int length) {
    urb.fields()->status = status;
    urb.fields()->actual_length = length;
    done.push_back(urb);
  }

  // Pending reads take waiting replies, oldest first.
  void deliver() {
    for (auto it = pending.begin(); it != pending.end() && !in_buffer.empty();) {
      if (it->endpoint() != kIn || in_halted || !umockdev_ioctl_client_get_connected(it->client)) {
        ++it;
        continue;
      }
      std::memcpy(it->buffer->data, in_buffer.front().data(), 8);
      in_buffer.pop_front();
      finish(*it, 0, 8);
      it = pending.erase(it);
    }
  }

  void take_packet(Urb urb) {
    const int exchange = exchanges + 1;
    if (exchange >= faults.deaf_from) {
      pending.push_back(urb);
      return;
    }
    exchanges = exchange;
    seen.last_packet = std::chrono::steady_clock::now();
    if (unit.trace().empty()) seen.first_packet = seen.last_packet;
    unit.write(urb.buffer->data, 8);
    Reply reply{};
    unit.read(reply.data(), 8);
    finish(urb, 0, urb.fields()->buffer_length);
    if (exchange >= faults.silent_from) return;
    if (exchange == faults.late_reply_at) {
      late_held = true;
      late_reply = reply;
      return;
    }
    in_buffer.push_back(reply);
  }

  void submit(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(arg, 0, sizeof(usbdevfs_urb), nullptr);
    auto* fields = reinterpret_cast<usbdevfs_urb*>(data->data);
    if (fields->type == USBDEVFS_URB_TYPE_CONTROL && fields->endpoint == 0) {
      control(client, data);
      return;
    }
    // The kernel refuses a transfer of another type than the endpoint's.
    const bool out = fields->endpoint == kOut;
    const int refused = fields->type != urb_type                             ? EINVAL
                        : gone || (out && exchanges + 1 >= faults.unplug_at) ? ENODEV
                                                                             : 0;
    if (refused != 0) {
      gone = gone || refused == ENODEV;
      g_object_unref(data);
      umockdev_ioctl_client_complete(client, -1, refused);
      return;
    }
    const Urb urb = take(client, data);
    bool& halted = out ? out_halted : in_halted;
    int& stall_at = out ? faults.out_stall_at : faults.in_stall_at;
    if (!halted && (out ? exchanges + 1 : exchanges) == stall_at) {
      halted = true;
      stall_at = kNever;
    }
    if (halted) {
      finish(urb, -EPIPE, 0);
    } else if (out) {
      take_packet(urb);
    } else {
      pending.push_back(urb);
    }
    deliver();
  }

  // Control requests on endpoint 0: the string descriptors; anything else
  // stalls, as a unit without the request does.
  void control(UMockdevIoctlClient* client, UMockdevIoctlData* data) {
    const Urb urb = take(client, data);
    std::uint8_t* setup = urb.buffer->data;
    const int index = setup[2];
    const int asked = setup[6] | setup[7] << 8;
    if (setup[0] != 0x80 || setup[1] != kGetDescriptor || setup[3] != kStringDescriptor ||
        (index != 0 && (index != 3 || serial.empty()))) {
      finish(urb, -EPIPE, 0);
      return;
    }
    const std::vector<std::uint8_t> reply = string_descriptor(index, serial);
    const int length =
        std::min({asked, static_cast<int>(reply.size()), urb.fields()->buffer_length - 8});
    std::memcpy(setup + 8, reply.data(), static_cast<std::size_t>(length));
    finish(urb, 0, length);
  }

  void discard(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
    const gulong address = *reinterpret_cast<gulong*>(arg->data);
    for (auto it = pending.begin(); it != pending.end(); ++it) {
      if (it->client != client || it->urb->client_addr != address) continue;
      const bool read = it->endpoint() == kIn;
      finish(*it, -ENOENT, 0);
      pending.erase(it);
      // The late reply turns up just after the host stopped waiting.
      if (read && late_held) {
        late_held = false;
        in_buffer.push_back(late_reply);
      }
      umockdev_ioctl_client_complete(client, 0, 0);
      return;
    }
    umockdev_ioctl_client_complete(client, -1, EINVAL);
  }

  // The oldest finished transfer of this opening.
  void reap(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
    const auto it = std::find_if(done.begin(), done.end(),
                                 [client](const Urb& u) { return u.client == client; });
    if (it == done.end()) {
      umockdev_ioctl_client_complete(client, -1, gone ? ENODEV : EAGAIN);
      return;
    }
    Urb urb = *it;
    done.erase(it);
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(arg, 0, sizeof(void*), nullptr);
    umockdev_ioctl_data_set_ptr(data, 0, urb.urb);
    g_object_unref(data);
    umockdev_ioctl_client_complete(client, 0, 0);
    urb.release();
  }

  gboolean handle(UMockdevIoctlClient* client) {
    std::lock_guard lock(mutex);
    const gulong request = umockdev_ioctl_client_get_request(client);
    UMockdevIoctlData* arg = umockdev_ioctl_client_get_arg(client);
    switch (request) {
      case USBDEVFS_GET_CAPABILITIES: {
        UMockdevIoctlData* data =
            umockdev_ioctl_data_resolve(arg, 0, sizeof(std::uint32_t), nullptr);
        const std::uint32_t caps = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                   USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
        std::memcpy(data->data, &caps, sizeof caps);
        g_object_unref(data);
        umockdev_ioctl_client_complete(client, 0, 0);
        break;
      }
      case USBDEVFS_CLAIMINTERFACE:
      case USBDEVFS_DISCONNECT_CLAIM: {
        const int refused = faults.held ? EBUSY : gone ? ENODEV : 0;
        umockdev_ioctl_client_complete(client, refused ? -1 : 0, refused);
        break;
      }
      case USBDEVFS_GETDRIVER:
        umockdev_ioctl_client_complete(client, -1, ENODATA);
        break;
      case USBDEVFS_RELEASEINTERFACE:
      case USBDEVFS_RESET:
      case USBDEVFS_RESETEP:
      case USBDEVFS_SETINTERFACE:
      case USBDEVFS_SETCONFIGURATION:
        umockdev_ioctl_client_complete(client, 0, 0);
        break;
      case USBDEVFS_CLEAR_HALT: {
        UMockdevIoctlData* data = umockdev_ioctl_data_resolve(arg, 0, sizeof(unsigned), nullptr);
        unsigned endpoint = 0;
        std::memcpy(&endpoint, data->data, sizeof endpoint);
        g_object_unref(data);
        (endpoint == kIn ? in_halted : out_halted) = false;
        ++seen.halts_cleared;
        umockdev_ioctl_client_complete(client, 0, 0);
        deliver();
        break;
      }
      case USBDEVFS_SUBMITURB:
        submit(client, arg);
        break;
      case USBDEVFS_DISCARDURB:
        discard(client, arg);
        break;
      case USBDEVFS_REAPURB:
      case USBDEVFS_REAPURBNDELAY:
        reap(client, arg);
        break;
      default:
        umockdev_ioctl_client_complete(client, -1, ENOTTY);
    }
    return TRUE;
  }

  static gboolean on_ioctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self) {
    return static_cast<Impl*>(self)->handle(client);
  }

  // Transfers of an opening that was closed died with it (all of them when
  // the unit goes); the unit's IN buffer did not. Another program may have
  // the node open at the same time, to read the serial number.
  void drop_closed(bool all) {
    const auto closed = [all](const Urb& urb) {
      const bool dead = all || !umockdev_ioctl_client_get_connected(urb.client);
      if (dead) urb.release();
      return dead;
    };
    std::erase_if(pending, closed);
    std::erase_if(done, closed);
  }

  static void on_connect(UMockdevIoctlBase*, UMockdevIoctlClient*, gpointer self) {
    auto* impl = static_cast<Impl*>(self);
    std::lock_guard lock(impl->mutex);
    impl->drop_closed(false);
  }
};

EmulatedUnit::EmulatedUnit(sim::SimUnit& unit, std::uint16_t vendor, std::uint16_t product,
                           EndpointKind kind, const std::string& serial, const Faults& faults)
    : impl_(std::make_unique<Impl>(unit, kind, serial)) {
  std::tie(impl_->testbed, impl_->port) = shared_bus().join();
  const int port = impl_->port, devnum = port + 1;  // the root hub is 1
  char node[32];
  std::snprintf(node, sizeof node, "/dev/bus/usb/001/%03d", devnum);
  impl_->dev_node = node;
  impl_->sys_path = "/devices/pci0000:00/0000:00:14.0/usb1/1-" + std::to_string(port);
  const std::string desc = hex(descriptors(vendor, product, kind, !serial.empty()));
  const std::string serial_line = serial.empty() ? "" : "A: serial=" + serial + "\n";
  std::vector<char> record(2048);
  std::snprintf(record.data(), record.size(),
                "P: %s\nN: %s=%s\nE: DEVNAME=%s\nE: DEVTYPE=usb_device\nE: DRIVER=usb\n"
                "E: BUSNUM=001\nE: DEVNUM=%03d\nE: MAJOR=189\nE: MINOR=%d\nE: SUBSYSTEM=usb\n"
                "E: PRODUCT=%04x/%04x/100\nA: idVendor=%04x\nA: idProduct=%04x\n"
                "A: bConfigurationValue=1\nA: bNumConfigurations=1\nA: busnum=1\nA: devnum=%d\n"
                "A: devpath=%d\nA: speed=12\n%sH: descriptors=%s\n",
                impl_->sys_path.c_str(), node + 5, desc.c_str(), node, devnum, devnum, vendor,
                product, vendor, product, devnum, port, serial_line.c_str(), desc.c_str());
  GError* error = nullptr;
  const auto fail = [&error](const std::string& what) {
    const std::string message = error ? error->message : "?";
    g_clear_error(&error);
    throw std::runtime_error(what + message);
  };
  if (!umockdev_testbed_add_from_string(impl_->testbed, record.data(), &error)) {
    shared_bus().leave(impl_->port);
    fail("umockdev refused the device: ");
  }
  impl_->handler = umockdev_ioctl_base_new();
  g_signal_connect(impl_->handler, "handle-ioctl", G_CALLBACK(&Impl::on_ioctl), impl_.get());
  g_signal_connect(impl_->handler, "client-connected", G_CALLBACK(&Impl::on_connect), impl_.get());
  if (!umockdev_testbed_attach_ioctl(impl_->testbed, impl_->dev_node.c_str(), impl_->handler,
                                     &error)) {
    fail("umockdev cannot answer the device's requests: ");
  }
  gchar* root = umockdev_testbed_get_root_dir(impl_->testbed);
  impl_->node_path = std::string(root) + impl_->dev_node;
  impl_->socket_path = std::string(root) + "/ioctl" + impl_->dev_node;
  // Other users must reach the bus too (a forbidden unit is tried as
  // nobody): every unit admits anyone, as the udev rule makes it.
  chmod(root, 01777);
  chmod(impl_->node_path.c_str(), 0666);
  chmod(impl_->socket_path.c_str(), 0666);
  g_free(root);
  set(faults);
}

EmulatedUnit::~EmulatedUnit() {
  {
    std::lock_guard lock(impl_->mutex);
    impl_->drop_closed(true);
  }
  umockdev_testbed_detach_ioctl(impl_->testbed, impl_->dev_node.c_str(), nullptr);
  g_object_unref(impl_->handler);
  umockdev_testbed_remove_device(impl_->testbed, ("/sys" + impl_->sys_path).c_str());
  shared_bus().leave(impl_->port);
}

bool EmulatedUnit::available(std::string& why_not) {
  // umockdev's own check looks at /sys before any test bed exists and
  // remembers its answer; the preload library is what matters.
  const char* preload = std::getenv("LD_PRELOAD");
  if (preload != nullptr && std::strstr(preload, "libumockdev-preload") != nullptr) return true;
  why_not =
      "not running under umockdev's preload library; run this program through "
      "umockdev-wrapper (Debian package umockdev)";
  return false;
}

void EmulatedUnit::set(const Faults& faults) {
  std::lock_guard lock(impl_->mutex);
  impl_->faults = faults;
  if (faults.stale_reply) impl_->in_buffer.push_back({0x3F, 'O', 'L', 'D'});
  if (faults.forbidden) {
    chmod(impl_->node_path.c_str(), geteuid() == 0 ? 0600 : 0000);
    // umockdev connects its request socket even when the open was refused,
    // and ends the program when it cannot: let anyone connect to it.
    chmod(impl_->socket_path.c_str(), 0666);
  }
}

Seen EmulatedUnit::seen() const {
  std::lock_guard lock(impl_->mutex);
  Seen seen = impl_->seen;
  seen.replies_waiting = impl_->in_buffer.size();
  return seen;
}

int EmulatedUnit::bus_address() const {
  return impl_->port + 1;
}

bool as_unprivileged(const std::function<bool()>& fn) {
  const bool dropped = geteuid() == 0 && seteuid(65534) == 0;
  const bool result = fn();
  if (dropped && seteuid(0) != 0) std::perror("seteuid");
  return result;
}

}  // namespace zenta::testing
