/// \file
/// The headset plug-in, as a calling client sees it.
///
/// A client loads the library, hands it a logger, reports its calls and the audio device that the user chose,
/// and registers a listener; the plug-in finds the USB headsets, lights the one that belongs to the audio
/// device and tells the listener what the user asked for with the headset's buttons.
///
/// \code
///   auto logger = std::make_shared<MyLogger>();
///   auto control = plugin_control::createPluginControl(logger);
///   auto listener = std::make_shared<MyListener>();
///   control->setCallControlListener(listener);
///   control->setAudioDevice("usb-0b0e-24c9-A1B2C3", "Jabra Link 380c", "A1B2C3");
///   control->incomingCall("", "42", true);   // the headset shows the call
///   control->connectCall("", "42");          // the off-hook indicator is lit
///   ...
///   plugin_control::stopPluginControl();
/// \endcode
///
/// **Threads.** These words say on which thread a function is called:
/// - `[host thread]`: called by the client, on any of its threads.
/// - `[read thread]`: called by the plug-in, on the thread that reads the headset whose button was pressed.
/// - `[worker thread]`: called by the plug-in, on its one worker.
/// - `[message thread]`: called by the plug-in, on the thread that watches headsets come and go.
/// - `[any thread]`: called by the plug-in, on any of these, on its retry thread, or on the client's own
/// thread inside
///   a call that the client made.
///
/// Listeners are called without a lock held; they, and the device availability hook, may call back into the
/// plug-in, stopPluginControl() included. A logger is called in the middle of things and must not. Whoever
/// blocks in a callback holds up the thread named for it: hand the news to a thread of your own and return.
///
/// **Lifetime.** The client owns its logger and its listeners; the plug-in keeps weak references and stops
/// calling when they are gone. A callback that is running when its object is let go keeps that object alive
/// until it returns.
///
/// **Exceptions out of callbacks.** Out of a request such as onAnswer(): the headset is let go, as if it had
/// been pulled out. Out of onActiveDeviceNotify(), onDeviceRemovedNotify() and the hook: logged and survived.
/// Out of the logger: wherever the line was written, and out of the client's own call if it was there.
///
/// **Text.** Every text is UTF-8 and may have any length; an empty one is accepted everywhere. Log lines of
/// more than 1,023 bytes are not delivered.
///
/// **Failures.** No operation reports an error by throwing, but for std::bad_alloc and std::system_error when
/// memory or threads run out. A failed operation logs a line and returns the neutral result named with it.
///
/// This header needs the standard library alone and compiles as C++17 and later.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#if defined(_WIN32)
#define ORVEX_API
#elif defined(__GNUC__)
#define ORVEX_API __attribute__((visibility("default")))
#else
#define ORVEX_API
#endif

namespace plugin_control {

/// The state of a call, as ICallInfo carries it.
enum CallState : std::uint32_t {
    CALL_STATE_IDLE = 0,       ///< known, but neither ringing nor up; shows nothing
    CALL_STATE_ALERTING = 1,   ///< an incoming call rings
    CALL_STATE_CONNECTED = 2,  ///< up, or ringing back at the far end
    CALL_STATE_HOLD = 3,       ///< held
};

/// One call, as callStateSync() passes it.
struct ICallInfo {
    std::string cid;             ///< the client's call identifier, usually decimal digits
    std::uint32_t state = 0;     ///< a CallState
    std::int32_t direction = 0;  ///< carried, not interpreted
    bool mute = false;           ///< true while the call's microphone is muted
};

/// The client's log. Implemented by the client.
class IPluginLogger {
  public:
    virtual ~IPluginLogger() = default;

    /// Takes one line, its newline included. `level` is 2 for every line. Called by several threads at once,
    /// and in the middle of the plug-in's work: store the line and return. [any thread]
    virtual void log(const std::string& message, int level) = 0;
};

/// Receives what the user asks for at the headset. Implemented by the client.
///
/// The headset shows nothing new by itself: the client carries out the request and then reports the change
/// with IPluginCallControlCallback, which lights the indicators. A request can be refused by doing nothing.
///
/// `device_id` is the text that the client passed to setAudioDevice() for the active headset, empty if none
/// is active any more; `cid` names the call. An exception that leaves a request operation is taken for a
/// broken headset, which is then closed.
class IPluginCallControlListener {
  public:
    virtual ~IPluginCallControlListener() = default;

    /// Answer the ringing call `cid`. [read thread]
    virtual void onAnswer(const std::string& device_id, const std::string& cid) = 0;
    /// End the connected call `cid`. [read thread]
    virtual void onEndCall(const std::string& device_id, const std::string& cid) = 0;
    /// Hold the current call; `cid` is empty. [read thread]
    virtual void onHoldCall(const std::string& device_id, const std::string& cid) = 0;
    /// Resume the call `cid`. [read thread]
    virtual void onResumeCall(const std::string& device_id, const std::string& cid) = 0;
    /// Reject the ringing call `cid`. [read thread]
    virtual void onRejectCall(const std::string& device_id, const std::string& cid) = 0;
    /// Mute the call `cid`. Confirm with IPluginCallControlCallback::mute(). [read thread]
    /// \param muted  the call's flag as it is now: true, unless the client has just said otherwise
    virtual void onMuteCall(const std::string& device_id, const std::string& cid, bool muted) = 0;
    /// Unmute the call `cid`. Confirm with IPluginCallControlCallback::unmute(). [read thread]
    /// \param muted  the call's flag as it is now: false, unless the client has just said otherwise
    virtual void onUnmuteCall(const std::string& device_id, const std::string& cid, bool muted) = 0;

    /// The listener was registered; the text is empty. [host thread]
    virtual void onListenerAttached(const std::string& text) = 0;

    /// A headset became active and is about to show the current calls. [worker thread]
    /// \param host_device_id  the `device_id` of the setAudioDevice() call that it matched
    /// \param vendor_id       USB vendor id
    /// \param product_id      USB product id
    /// \param vendor_name     name of the vendor, "Unknown" if it is not known
    /// \param device_name     product name of the headset, "unknown" if it states none
    /// \param serial          serial number of the headset
    virtual void onActiveDeviceNotify(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) = 0;

    /// A headset went away. The values are those of onActiveDeviceNotify(); `host_device_id` is empty if the
    /// headset was never active. [worker thread]
    virtual void onDeviceRemovedNotify(const std::string& host_device_id, int vendor_id, int product_id,
                                       const std::string& vendor_name, const std::string& device_name,
                                       const std::string& serial) = 0;

    /// Reserved. Never called.
    virtual void reservedListener11(const std::string& argument) = 0;
    /// Reserved. Never called.
    virtual void reservedListener12(const std::string& argument) = 0;
    /// Reserved. Never called.
    virtual void reservedListener13(const std::string& argument) = 0;

    /// The headset's function key was pressed; `cid` is empty. [read thread]
    virtual void onFunctionKey(const std::string& device_id, const std::string& cid) = 0;
};

/// Receives key presses that concern the client's configuration. Implemented by the client.
class IPluginConfigListener {
  public:
    virtual ~IPluginConfigListener() = default;

    /// The headset's configuration key was pressed; the argument is always false. [read thread]
    virtual void onConfigKey(bool pressed) = 0;
};

/// Takes the client's calls and its audio device. Implemented by the plug-in.
///
/// Every operation may be called from any of the client's threads, several at once. One that changes what the
/// headset shows writes to it before it returns, which takes a moment, and at most a second for each report
/// when the headset does not answer. After stopPluginControl() the operations do nothing until a factory is
/// called again.
class IPluginCallControlCallback {
  public:
    virtual ~IPluginCallControlCallback() = default;

    /// Names the audio device that the user chose for calls. The headset that belongs to it becomes the
    /// active one, the only one that shows calls and whose buttons count: its serial number occurs in
    /// `device_id` or `serial`, or its product name in `device_name` (all case-sensitive). The first such
    /// request that finds no headset is repeated for about three seconds, because the audio device often
    /// shows up before the HID interface does. \return true when a headset matched in this call; false when
    /// none did, when `device_id` is empty (nothing
    ///         changes then), or after stop. The former active headset goes idle unless `device_id` is empty.
    virtual bool setAudioDevice(const std::string& device_id, const std::string& device_name,
                                const std::string& serial) = 0;

    /// Reserved. \return false
    virtual bool reservedCallControl2(const std::string& first, const std::string& second) = 0;
    /// Reserved. \return false
    virtual bool reservedCallControl3(const std::string& first, const std::string& second) = 0;

    /// The call was muted. The first argument of this and the following operations is not used.
    virtual void mute(const std::string& unused, const std::string& cid) = 0;
    /// The call was unmuted.
    virtual void unmute(const std::string& unused, const std::string& cid) = 0;

    /// A call was created; nothing is shown until it rings, rings back or connects.
    virtual void createCall(const std::string& unused, const std::string& cid, int direction) = 0;
    /// A call came in. With `ringing` false the headset is left as it is, and a call that was ringing is
    /// silent now.
    virtual void incomingCall(const std::string& unused, const std::string& cid, bool ringing) = 0;
    /// The far end of an outgoing call rings; the headset shows that it is in use.
    virtual void ringbackCall(const std::string& unused, const std::string& cid) = 0;
    /// The call is up.
    virtual void connectCall(const std::string& unused, const std::string& cid) = 0;
    /// The call is held.
    virtual void holdCall(const std::string& unused, const std::string& cid) = 0;
    /// The call is up again.
    virtual void resumeCall(const std::string& unused, const std::string& cid) = 0;
    /// The call is over, and forgotten.
    virtual void endCall(const std::string& unused, const std::string& cid) = 0;

    /// Reserved. Does nothing.
    virtual void reservedCallControl13(const std::string& first, const std::string& second) = 0;

    /// Replaces all calls that the plug-in knows by `calls`. Once a headset has been active, the calls are
    /// shown at once. `device_id` and `num_calls` are only logged.
    virtual void callStateSync(const std::string& device_id, const std::vector<ICallInfo>& calls,
                               int num_calls) = 0;

    /// Registers the receiver of requests in place of any earlier one and calls its onListenerAttached(). The
    /// plug-in keeps a weak reference. An empty pointer unregisters.
    virtual void setCallControlListener(const std::shared_ptr<IPluginCallControlListener>& listener) = 0;
    /// \return the registered listener; empty when there is none or the client let go of it
    virtual std::shared_ptr<IPluginCallControlListener> getCallControlListener() = 0;
};

/// The configuration side. Implemented by the plug-in; works after stop, too.
class IPluginConfigCallback {
  public:
    virtual ~IPluginConfigCallback() = default;

    /// Reserved. Does nothing.
    virtual void reservedConfig1(bool value) = 0;
    /// Reserved. \return false
    virtual bool reservedConfig2() = 0;
    /// Reserved. \return 0
    virtual int reservedConfig3(const std::string& first, int second) = 0;
    /// Reserved. \return false
    virtual bool reservedConfig4() = 0;

    /// Asks for the model name of the active headset.
    /// \param device_id  the client's id of the audio device, or a longer text that contains it
    /// \param[out] model the model name; left alone when `device_id` is not the active headset's
    /// \param unused     not used
    /// \return true when `device_id` is the active headset's and its model name is known. Third-party
    /// headsets have no
    ///         model name, so false is the usual answer.
    virtual bool getHeadsetModel(const std::string& device_id, std::string& model, int unused) = 0;

    /// Reserved. \return 0
    virtual int reservedConfig6(const std::string& first, const std::string& second) = 0;
    /// Reserved. \return false
    virtual bool reservedConfig7() = 0;

    /// Logged only; headsets are not told.
    virtual void setDoNotDisturb(const std::string& unused, int value) = 0;

    /// Reserved. \return false
    virtual bool reservedConfig9(const std::string& argument) = 0;
    /// Reserved. \return false
    virtual bool reservedConfig10(const std::string& argument) = 0;
    /// Reserved. \return 0
    virtual int reservedConfig11(const std::string& first, const std::string& second) = 0;
    /// Reserved. Does nothing.
    virtual void reservedConfig12(const std::string& argument) = 0;

    /// Installs a test that can keep headsets out: it gets vendor and product id and returns false to have
    /// the headset ignored. It is asked whenever the plug-in looks for headsets [message thread], so that it
    /// takes effect when a device next comes or goes. An empty function admits every headset. The hook
    /// outlives stop.
    virtual void registerDeviceAvailabilityHook(const std::function<bool(int, int)>& hook) = 0;

    /// Registers the receiver of configuration keys. The plug-in keeps a weak reference and calls nothing
    /// yet.
    virtual void setConfigListener(const std::shared_ptr<IPluginConfigListener>& listener) = 0;
    /// \return the registered listener; empty when there is none or the client let go of it
    virtual std::shared_ptr<IPluginConfigListener> getConfigListener() = 0;

    /// Reserved. Does nothing.
    virtual void reservedConfig16(bool value) = 0;
    /// Reserved. Does nothing.
    virtual void reservedConfig17() = 0;
};

/// Starts the plug-in, or finds it running, and returns its call-control side.
///
/// The first call, and the first after stopPluginControl(), starts the plug-in with `logger`; a later one
/// returns the same object and ignores `logger`. An expired logger is accepted and means silence. The result
/// is never empty and is shared: the plug-in keeps running when the client lets go of it, until
/// stopPluginControl(). Two first calls, or a call and a stop, must not run at the same time. [host thread]
/// \throws std::bad_alloc, std::system_error when memory or threads run out; the plug-in is then not running
ORVEX_API std::shared_ptr<IPluginCallControlCallback> createPluginControl(
    const std::weak_ptr<IPluginLogger>& logger);

/// The same, for the configuration side of the same object.
ORVEX_API std::shared_ptr<IPluginConfigCallback> createPluginConfig(
    const std::weak_ptr<IPluginLogger>& logger);

/// Stops the plug-in: the active headset goes idle, every headset is let go and the threads end. May be
/// called again, without a start before, and from inside any callback; a callback that runs on another thread
/// meanwhile is not waited for. A host that exits or unloads the library without it does no harm.
ORVEX_API void stopPluginControl();

}  // namespace plugin_control

extern "C" {

/// createPluginControl() for a client that looks functions up by name. `logger` points to the client's weak
/// reference, which is copied. \return the call-control side, owned by the plug-in: valid until
/// stopPluginControlFacade(), never to be deleted.
///         Null when the logger is gone or was never set, when memory or threads run out, or when the logger
///         throws; nothing is started by that call then.
/// No operation may be under way on another thread when the plug-in is stopped: nothing would keep the object
/// that it works on.
ORVEX_API plugin_control::IPluginCallControlCallback* createPluginControlFacade(
    std::weak_ptr<plugin_control::IPluginLogger>* logger);

/// createPluginConfig() in the same manner.
ORVEX_API plugin_control::IPluginConfigCallback* createPluginConfigFacade(
    std::weak_ptr<plugin_control::IPluginLogger>* logger);

/// stopPluginControl() in the same manner; what the logger throws ends here.
ORVEX_API void stopPluginControlFacade(void);

}  // extern "C"
