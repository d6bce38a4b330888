#include "emulated_unit.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace zenta::testing {

namespace {

constexpr const char* kSysPath = "/devices/pci0000:00/0000:00:14.0/usb1/1-1";
constexpr const char* kDevNode = "/dev/bus/usb/001/002";
constexpr std::uint8_t kOut = 0x01;
constexpr std::uint8_t kIn = 0x81;
constexpr int kNever = INT_MAX;

std::string hex(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  char digits[3];
  for (std::uint8_t b : bytes) {
    std::snprintf(digits, sizeof digits, "%02X", b);
    text += digits;
  }
  return text;
}

// Device, configuration, interface and two endpoint descriptors, as the
// kernel shows them in sysfs and in the device node.
std::vector<std::uint8_t> descriptors(std::uint16_t vendor, std::uint16_t product,
                                      EndpointKind kind) {
  const std::uint8_t type = kind == EndpointKind::kInterrupt ? 0x03 : 0x02;
  const std::uint8_t interval = kind == EndpointKind::kInterrupt ? 1 : 0;
  return {// device: USB 2.0, 64-byte control packets, one configuration
          0x12, 0x01, 0x00, 0x02, 0x00, 0x00, 0x00, 0x40, std::uint8_t(vendor & 0xFF),
          std::uint8_t(vendor >> 8), std::uint8_t(product & 0xFF), std::uint8_t(product >> 8), 0x00,
          0x01, 0x00, 0x00, 0x00, 0x01,
          // configuration 1, 32 bytes in all, one interface
          0x09, 0x02, 0x20, 0x00, 0x01, 0x01, 0x00, 0x80, 0x32,
          // interface 0, two endpoints, vendor class
          0x09, 0x04, 0x00, 0x00, 0x02, 0xFF, 0x00, 0x00, 0x00,
          // OUT and IN endpoints
          0x07, 0x05, kOut, type, 0x40, 0x00, interval, 0x07, 0x05, kIn, type, 0x40, 0x00,
          interval};
}

struct Urb {
  UMockdevIoctlData* urb = nullptr;
  UMockdevIoctlData* buffer = nullptr;
  usbdevfs_urb* fields() const { return reinterpret_cast<usbdevfs_urb*>(urb->data); }
  std::uint8_t endpoint() const { return fields()->endpoint; }
};

}  // namespace

struct EmulatedUnit::Impl {
  sim::SimUnit& unit;
  unsigned char urb_type;  // of both data endpoints
  UMockdevTestbed* testbed = nullptr;
  UMockdevIoctlBase* handler = nullptr;
  std::string node_path;
  std::string socket_path;

  mutable std::mutex mutex;
  std::deque<Reply> in_buffer;  // replies the host has not fetched
  std::vector<Urb> pending;     // submitted, not done
  std::deque<Urb> done;         // done, waiting to be reaped
  bool out_halted = false;
  bool in_halted = false;
  bool gone = false;
  bool held = false;
  int exchanges = 0;
  int halts_cleared = 0;
  int late_at = kNever;
  bool late_held = false;
  Reply late_reply{};
  int silent_from = kNever;
  int deaf_from = kNever;
  int out_stall_at = kNever;
  int in_stall_at = kNever;
  int unplug_at = kNever;

  Impl(sim::SimUnit& u, EndpointKind kind)
      : unit(u),
        urb_type(kind == EndpointKind::kInterrupt ? USBDEVFS_URB_TYPE_INTERRUPT
                                                  : USBDEVFS_URB_TYPE_BULK) {}

  void finish(Urb urb, int status, int length) {
    urb.fields()->status = status;
    urb.fields()->actual_length = length;
    done.push_back(urb);
  }

  // Pending reads take waiting replies, oldest first.
  void deliver() {
    for (auto it = pending.begin(); it != pending.end() && !in_buffer.empty();) {
      if (it->endpoint() != kIn || in_halted) {
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
    if (exchange >= deaf_from) {
      pending.push_back(urb);
      return;
    }
    exchanges = exchange;
    unit.write(urb.buffer->data, 8);
    Reply reply{};
    unit.read(reply.data(), 8);
    finish(urb, 0, urb.fields()->buffer_length);
    if (exchange >= silent_from) return;
    if (exchange == late_at) {
      late_held = true;
      late_reply = reply;
      return;
    }
    in_buffer.push_back(reply);
  }

  void submit(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(arg, 0, sizeof(usbdevfs_urb), nullptr);
    auto* fields = reinterpret_cast<usbdevfs_urb*>(data->data);
    // The kernel refuses a transfer of another type than the endpoint's.
    if (fields->type != urb_type) {
      g_object_unref(data);
      umockdev_ioctl_client_complete(client, -1, EINVAL);
      return;
    }
    if (gone || (fields->endpoint == kOut && exchanges + 1 >= unplug_at)) {
      gone = true;
      g_object_unref(data);
      umockdev_ioctl_client_complete(client, -1, ENODEV);
      return;
    }
    Urb urb{data, umockdev_ioctl_data_resolve(data, offsetof(usbdevfs_urb, buffer),
                                              static_cast<gsize>(fields->buffer_length), nullptr)};
    umockdev_ioctl_client_complete(client, 0, 0);
    if (fields->endpoint == kOut) {
      if (!out_halted && exchanges + 1 == out_stall_at) {
        out_halted = true;
        out_stall_at = kNever;
      }
      if (out_halted) {
        finish(urb, -EPIPE, 0);
      } else {
        take_packet(urb);
      }
    } else {
      if (!in_halted && exchanges == in_stall_at) {
        in_halted = true;
        in_stall_at = kNever;
      }
      if (in_halted) {
        finish(urb, -EPIPE, 0);
      } else {
        pending.push_back(urb);
      }
    }
    deliver();
  }

  void discard(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
    const gulong address = *reinterpret_cast<gulong*>(arg->data);
    for (auto it = pending.begin(); it != pending.end(); ++it) {
      if (it->urb->client_addr != address) continue;
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

  void reap(UMockdevIoctlClient* client, UMockdevIoctlData* arg) {
    if (done.empty()) {
      umockdev_ioctl_client_complete(client, -1, gone ? ENODEV : EAGAIN);
      return;
    }
    Urb urb = done.front();
    done.pop_front();
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(arg, 0, sizeof(void*), nullptr);
    umockdev_ioctl_data_set_ptr(data, 0, urb.urb);
    g_object_unref(data);
    umockdev_ioctl_client_complete(client, 0, 0);
    if (urb.buffer != nullptr) g_object_unref(urb.buffer);
    g_object_unref(urb.urb);
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
      case USBDEVFS_DISCONNECT_CLAIM:
        if (held) {
          umockdev_ioctl_client_complete(client, -1, EBUSY);
        } else {
          umockdev_ioctl_client_complete(client, gone ? -1 : 0, gone ? ENODEV : 0);
        }
        break;
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
        ++halts_cleared;
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

  // A new opening of the node: transfers of an earlier one died with it,
  // the unit's IN buffer did not.
  static void on_connect(UMockdevIoctlBase*, UMockdevIoctlClient*, gpointer self) {
    auto* impl = static_cast<Impl*>(self);
    std::lock_guard lock(impl->mutex);
    for (auto* list : {&impl->pending}) {
      for (Urb& urb : *list) {
        if (urb.buffer != nullptr) g_object_unref(urb.buffer);
        g_object_unref(urb.urb);
      }
      list->clear();
    }
    for (Urb& urb : impl->done) {
      if (urb.buffer != nullptr) g_object_unref(urb.buffer);
      g_object_unref(urb.urb);
    }
    impl->done.clear();
  }
};

EmulatedUnit::EmulatedUnit(sim::SimUnit& unit, std::uint16_t vendor, std::uint16_t product,
                           EndpointKind kind)
    : impl_(std::make_unique<Impl>(unit, kind)) {
  impl_->testbed = umockdev_testbed_new();
  const std::string desc = hex(descriptors(vendor, product, kind));
  char ids[32];
  std::snprintf(ids, sizeof ids, "%04x/%04x/100", vendor, product);
  char vid[8], pid[8];
  std::snprintf(vid, sizeof vid, "%04x", vendor);
  std::snprintf(pid, sizeof pid, "%04x", product);
  const std::string record = std::string("P: ") + kSysPath + "\nN: bus/usb/001/002=" + desc +
                             "\nE: DEVNAME=" + kDevNode +
                             "\nE: DEVTYPE=usb_device\nE: DRIVER=usb\nE: PRODUCT=" + ids +
                             "\nE: BUSNUM=001\nE: DEVNUM=002\nE: MAJOR=189\nE: MINOR=1"
                             "\nE: SUBSYSTEM=usb\nA: bConfigurationValue=1\nA: bNumConfigurations=1"
                             "\nA: busnum=1\nA: devnum=2\nA: devpath=1\nA: speed=12\nA: idVendor=" +
                             vid + "\nA: idProduct=" + pid + "\nH: descriptors=" + desc + "\n";
  GError* error = nullptr;
  if (!umockdev_testbed_add_from_string(impl_->testbed, record.c_str(), &error)) {
    const std::string message = error ? error->message : "?";
    g_clear_error(&error);
    g_object_unref(impl_->testbed);
    throw std::runtime_error("umockdev refused the device: " + message);
  }
  impl_->handler = umockdev_ioctl_base_new();
  g_signal_connect(impl_->handler, "handle-ioctl", G_CALLBACK(&Impl::on_ioctl), impl_.get());
  g_signal_connect(impl_->handler, "client-connected", G_CALLBACK(&Impl::on_connect), impl_.get());
  if (!umockdev_testbed_attach_ioctl(impl_->testbed, kDevNode, impl_->handler, &error)) {
    const std::string message = error ? error->message : "?";
    g_clear_error(&error);
    throw std::runtime_error("umockdev cannot answer the device's requests: " + message);
  }
  gchar* root = umockdev_testbed_get_root_dir(impl_->testbed);
  impl_->node_path = std::string(root) + kDevNode;
  impl_->socket_path = std::string(root) + "/ioctl" + kDevNode;
  // Other users must reach the bus too (forbid_access tests as nobody);
  // the node's own mode decides.
  chmod(root, 01777);
  g_free(root);
}

EmulatedUnit::~EmulatedUnit() {
  Impl::on_connect(nullptr, nullptr, impl_.get());
  umockdev_testbed_detach_ioctl(impl_->testbed, kDevNode, nullptr);
  g_object_unref(impl_->handler);
  g_object_unref(impl_->testbed);
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

void EmulatedUnit::late_reply_at(int exchange) {
  std::lock_guard lock(impl_->mutex);
  impl_->late_at = exchange;
}
void EmulatedUnit::stop_answering_at(int exchange) {
  std::lock_guard lock(impl_->mutex);
  impl_->silent_from = exchange;
}
void EmulatedUnit::stop_accepting_at(int exchange) {
  std::lock_guard lock(impl_->mutex);
  impl_->deaf_from = exchange;
}
void EmulatedUnit::stall_at(int exchange, std::uint8_t endpoint) {
  std::lock_guard lock(impl_->mutex);
  (endpoint == kIn ? impl_->in_stall_at : impl_->out_stall_at) = exchange;
}
void EmulatedUnit::unplug_at(int exchange) {
  std::lock_guard lock(impl_->mutex);
  impl_->unplug_at = exchange;
}
void EmulatedUnit::leave_stale_reply(const Reply& reply) {
  std::lock_guard lock(impl_->mutex);
  impl_->in_buffer.push_back(reply);
}
void EmulatedUnit::hold_by_another_program() {
  std::lock_guard lock(impl_->mutex);
  impl_->held = true;
}
void EmulatedUnit::forbid_access() {
  chmod(impl_->node_path.c_str(), geteuid() == 0 ? 0600 : 0000);
  // umockdev connects its request socket even when the open was refused,
  // and ends the program when it cannot: let anyone connect to it.
  chmod(impl_->socket_path.c_str(), 0666);
}

int EmulatedUnit::exchanges() const {
  std::lock_guard lock(impl_->mutex);
  return impl_->exchanges;
}
int EmulatedUnit::halts_cleared() const {
  std::lock_guard lock(impl_->mutex);
  return impl_->halts_cleared;
}
std::size_t EmulatedUnit::replies_waiting() const {
  std::lock_guard lock(impl_->mutex);
  return impl_->in_buffer.size();
}

bool drop_to_nobody() {
  if (geteuid() != 0) return false;
  return seteuid(65534) == 0;
}

void restore_root() {
  if (seteuid(0) != 0) std::perror("seteuid");
}

}  // namespace zenta::testing
