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
///   control->incomingCall("", "42", true);   // rings
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
///   thread inside a call that the client made.
///
/// Listeners are called without a lock held; they, and the device availability hook, may call back into the
/// plug-in, plugin_control::stopPluginControl() included. A logger is called in the middle of things and must
/// not. Whoever blocks in a callback holds up the thread named for it: hand the news to a thread of your own
/// and return. **The hook is called with the plug-in's lock held**: it must not wait for another thread.
///
/// **Lifetime.** The client owns its logger and its listeners; the plug-in keeps weak references and stops
/// calling when they are gone. A callback that is running when its object is let go keeps that object alive
/// until it returns.
///
/// **Exceptions out of callbacks.** Out of a request such as onAnswer(): the headset is let go, as if it had
/// been pulled out. Out of onActiveDeviceNotify(), onDeviceRemovedNotify() and the hook: logged and survived.
/// Out of onListenerAttached(): out of setCallControlListener(). Out of the logger: wherever the line was
/// written; out of the client's own call if it was there, and the end of the process if it was on the worker.
///
/// **Text.** Every text is UTF-8 and may have any length; an empty one is accepted everywhere. Texts that are
/// passed to a callback are valid during the call. Log lines of more than 1,023 bytes are not delivered.
///
/// **Failures.** No operation reports an error by throwing, but for std::bad_alloc and std::system_error when
/// memory or threads run out. A failed operation logs a line and returns the neutral result named with it.
///
/// **The C++ library** must be the same on both sides, since texts and lists of it are passed: libstdc++ with
/// its C++11 strings, on Linux and on Windows (MinGW-w64) alike. The header refuses another one with an
/// error. If you have built the plug-in yourself with the C++ library and the options of your client, define
/// `ORVEX_HEADSET_PLUGIN_ANY_CXX_LIBRARY` before you include the header.
///
/// This header needs the standard library alone and compiles as C++17 and later.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orvex/headset_version.h"

// Texts and lists of the C++ library cross the boundary, so both sides must have them in the same form. With
// another form a client compiles and links, and then goes wrong without a word.
#if !defined(ORVEX_HEADSET_PLUGIN_ANY_CXX_LIBRARY)
#if defined(_LIBCPP_VERSION)
#error \
    "The headset plug-in is built with libstdc++; libc++ does not work with it. Compile without -stdlib=libc++."
#elif !defined(__GLIBCXX__)
#error "The headset plug-in is built with libstdc++; no other C++ library works with it."
#elif !_GLIBCXX_USE_CXX11_ABI
#error "The headset plug-in is built with _GLIBCXX_USE_CXX11_ABI=1; std::string has another form with 0."
#elif defined(_GLIBCXX_DEBUG)
#error "The headset plug-in is built without _GLIBCXX_DEBUG; std::vector has another form with it."
#endif
#endif

/// The two sides of the interface, and the functions that start and stop the plug-in.
namespace plugin_control {

/// The state of a call, as ICallInfo carries it.
enum CallState : std::uint32_t {
    CALL_STATE_IDLE = 0,       ///< known, but neither ringing nor up; shows nothing
    CALL_STATE_ALERTING = 1,   ///< an incoming call rings
    CALL_STATE_CONNECTED = 2,  ///< up, or ringing back at the far end
    CALL_STATE_HOLD = 3,       ///< held
};

/// One call, as IPluginCallControlCallback::callStateSync() takes it.
struct ICallInfo {
    std::string cid;             ///< the client's call identifier, usually decimal digits
    std::uint32_t state = 0;     ///< a CallState
    std::int32_t direction = 0;  ///< carried, not interpreted
    bool mute = false;           ///< true while the call's microphone is muted
};

/// The client's log. Implemented and owned by the client.
class IPluginLogger {
  public:
    virtual ~IPluginLogger() = default;

    /// Takes one line. Called by several threads at once, and in the middle of the plug-in's work: store the
    /// line and return, and do not call the plug-in. [any thread]
    /// \param message  the line, its newline included; a few lines have further newlines inside
    /// \param level    2 for every line
    virtual void log(const std::string& message, int level) = 0;
};

/// Receives what the user asks for at the headset. Implemented and owned by the client, which derives from
/// CallControlListener where it uses only part of it.
///
/// The headset shows nothing new by itself: the client carries out the request and then reports the change
/// with IPluginCallControlCallback, which lights the indicators. A request can be refused by doing nothing;
/// one to mute is better refused by reporting that the call is unmuted, since the plug-in takes the call for
/// muted from then on and asks to unmute it at the next press.
///
/// An exception that leaves a request operation is taken for a broken headset, which is then closed and
/// reported as removed.
class IPluginCallControlListener {
  public:
    virtual ~IPluginCallControlListener() = default;

    /// Asks to answer a ringing call. [read thread]
    /// \param device_id  the `device_id` of the setAudioDevice() call that made the headset the active one;
    ///                   empty if none is active any more
    /// \param cid        the call
    virtual void onAnswer(const std::string& device_id, const std::string& cid) = 0;

    /// Asks to end a connected call. [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        the call
    virtual void onEndCall(const std::string& device_id, const std::string& cid) = 0;

    /// Asks to hold the current call. [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        empty: the client knows which call is the current one
    virtual void onHoldCall(const std::string& device_id, const std::string& cid) = 0;

    /// Asks to resume a held call. [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        the call
    virtual void onResumeCall(const std::string& device_id, const std::string& cid) = 0;

    /// Asks to reject a ringing call. [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        the call
    virtual void onRejectCall(const std::string& device_id, const std::string& cid) = 0;

    /// Asks to mute a connected call. Confirm with IPluginCallControlCallback::mute(). [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        the call
    /// \param muted      the call's flag as it is now: true, unless the client has just said otherwise
    virtual void onMuteCall(const std::string& device_id, const std::string& cid, bool muted) = 0;

    /// Asks to unmute a connected call. Confirm with IPluginCallControlCallback::unmute(). [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        the call
    /// \param muted      the call's flag as it is now: false, unless the client has just said otherwise
    virtual void onUnmuteCall(const std::string& device_id, const std::string& cid, bool muted) = 0;

    /// Tells that the listener was registered, before setCallControlListener() returns. [host thread]
    /// \param text  empty
    virtual void onListenerAttached(const std::string& text) = 0;

    /// Tells that a headset became active and is about to show the current calls. [worker thread]
    /// \param host_device_id  the `device_id` of the setAudioDevice() call that it matched
    /// \param vendor_id       USB vendor id
    /// \param product_id      USB product id
    /// \param vendor_name     name of the vendor, "Unknown" if it is not known
    /// \param device_name     product name of the headset, "unknown" if it states none
    /// \param serial          serial number of the headset
    virtual void onActiveDeviceNotify(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) = 0;

    /// Tells that a headset went away, an active one or another. [worker thread]
    ///
    /// **A headset that comes back is not active**: choose it again with setAudioDevice().
    /// \param host_device_id  as in onActiveDeviceNotify(); empty if the headset was never active
    /// \param vendor_id       USB vendor id
    /// \param product_id      USB product id
    /// \param vendor_name     name of the vendor, "Unknown" if it is not known
    /// \param device_name     product name of the headset, "unknown" if it states none
    /// \param serial          serial number of the headset
    virtual void onDeviceRemovedNotify(const std::string& host_device_id, int vendor_id, int product_id,
                                       const std::string& vendor_name, const std::string& device_name,
                                       const std::string& serial) = 0;

    /// Reserved. Never called.
    /// \param argument  none
    virtual void reservedListener11(const std::string& argument) = 0;
    /// Reserved. Never called.
    /// \param argument  none
    virtual void reservedListener12(const std::string& argument) = 0;
    /// Reserved. Never called.
    /// \param argument  none
    virtual void reservedListener13(const std::string& argument) = 0;

    /// Tells that the headset's function key was pressed. [read thread]
    /// \param device_id  as in onAnswer()
    /// \param cid        empty
    virtual void onFunctionKey(const std::string& device_id, const std::string& cid) = 0;
};

/// A listener that ignores everything. Derive from it and override what you use.
class CallControlListener : public IPluginCallControlListener {
  public:
    void onAnswer(const std::string& /*device_id*/, const std::string& /*cid*/) override {}
    void onEndCall(const std::string& /*device_id*/, const std::string& /*cid*/) override {}
    void onHoldCall(const std::string& /*device_id*/, const std::string& /*cid*/) override {}
    void onResumeCall(const std::string& /*device_id*/, const std::string& /*cid*/) override {}
    void onRejectCall(const std::string& /*device_id*/, const std::string& /*cid*/) override {}
    void onMuteCall(const std::string& /*device_id*/, const std::string& /*cid*/, bool /*muted*/) override {}
    void onUnmuteCall(const std::string& /*device_id*/, const std::string& /*cid*/, bool /*muted*/) override {
    }
    void onListenerAttached(const std::string& /*text*/) override {}
    void onActiveDeviceNotify(const std::string& /*host_device_id*/, int /*vendor_id*/, int /*product_id*/,
                              const std::string& /*vendor_name*/, const std::string& /*device_name*/,
                              const std::string& /*serial*/) override {}
    void onDeviceRemovedNotify(const std::string& /*host_device_id*/, int /*vendor_id*/, int /*product_id*/,
                               const std::string& /*vendor_name*/, const std::string& /*device_name*/,
                               const std::string& /*serial*/) override {}
    void reservedListener11(const std::string& /*argument*/) override {}
    void reservedListener12(const std::string& /*argument*/) override {}
    void reservedListener13(const std::string& /*argument*/) override {}
    void onFunctionKey(const std::string& /*device_id*/, const std::string& /*cid*/) override {}
};

/// Receives key presses that concern the client's configuration. Implemented and owned by the client.
class IPluginConfigListener {
  public:
    virtual ~IPluginConfigListener() = default;

    /// Tells that the headset's configuration key was pressed. An exception is taken for a broken headset, as
    /// one out of a request is. [read thread]
    /// \param pressed  always false
    virtual void onConfigKey(bool pressed) = 0;
};

/// Takes the client's calls and its audio device. Implemented by the plug-in.
///
/// Every operation may be called from any of the client's threads, several at once. [host thread] One that
/// changes what the headset shows writes to it before it returns, which takes a moment, and at most a second
/// for each report when the headset does not answer. After plugin_control::stopPluginControl() the operations
/// do nothing until a factory is called again, but for setCallControlListener() and getCallControlListener(),
/// which work on.
///
/// A call is known by its identifier `cid`, which the client chooses: any text, compared byte by byte. The
/// plug-in knows a call from the first of these on: incomingCall() that rings, ringbackCall(), connectCall(),
/// holdCall(), resumeCall(), callStateSync(). endCall() forgets it.
class IPluginCallControlCallback {
  public:
    virtual ~IPluginCallControlCallback() = default;

    /// Names the audio device that the user chose for calls.
    ///
    /// The headset that belongs to it becomes the active one, the only one that shows calls and whose buttons
    /// count: its serial number occurs in `device_id` or `serial`, or its product name in `device_name` (all
    /// case-sensitive). Of several, the one whose serial number sorts first is taken. The former active
    /// headset goes idle, also where no headset matches, unless `device_id` is empty. A headset that is
    /// active already goes idle as well, and is shown the calls anew.
    ///
    /// **A headset that is pulled out and plugged in again is not active until it is chosen again**: call
    /// this once more when the audio device is back.
    ///
    /// The first request after a start, if it finds no headset, is repeated for about three seconds: the
    /// audio device often shows up before the HID interface does. The same request (the same three texts) is
    /// answered with false at once meanwhile; and afterwards, too, unless a headset matched in that time or a
    /// different request was made since.
    /// \param device_id    the client's id of the audio device; handed back in requests and notices
    /// \param device_name  its name
    /// \param serial       its serial number; may be empty
    /// \return true when a headset matched in this call; false when none did, when `device_id` is empty
    ///         (nothing changes then), or after stop
    virtual bool setAudioDevice(const std::string& device_id, const std::string& device_name,
                                const std::string& serial) = 0;

    /// Reserved.
    /// \param first   not used
    /// \param second  not used
    /// \return false
    virtual bool reservedCallControl2(const std::string& first, const std::string& second) = 0;
    /// Reserved.
    /// \param first   not used
    /// \param second  not used
    /// \return false
    virtual bool reservedCallControl3(const std::string& first, const std::string& second) = 0;

    /// Reports that a call was muted. The headset shows it when the call is a connected one.
    /// \param unused  not used
    /// \param cid     the call; an unknown one changes nothing
    virtual void mute(const std::string& unused, const std::string& cid) = 0;
    /// Reports that a call was unmuted. The headset shows it when the call is a connected one.
    /// \param unused  not used
    /// \param cid     the call; an unknown one changes nothing
    virtual void unmute(const std::string& unused, const std::string& cid) = 0;

    /// Reports that a call was created. It is logged, and nothing else.
    /// \param unused     not used
    /// \param cid        the call
    /// \param direction  logged, not interpreted
    virtual void createCall(const std::string& unused, const std::string& cid, int direction) = 0;
    /// Reports that a call came in.
    /// \param unused   not used
    /// \param cid      the call
    /// \param ringing  with false the headset is left as it is. **A call that is up becomes silent then**:
    ///                 no mute, key or indicator follows it until it is reported as ringing or connected
    ///                 again.
    virtual void incomingCall(const std::string& unused, const std::string& cid, bool ringing) = 0;
    /// Reports that the far end of an outgoing call rings. The headset shows that it is in use.
    /// \param unused  not used
    /// \param cid     the call
    virtual void ringbackCall(const std::string& unused, const std::string& cid) = 0;
    /// Reports that a call is up. The headset shows that it is in use; its mute indicator stays as it is.
    /// \param unused  not used
    /// \param cid     the call
    virtual void connectCall(const std::string& unused, const std::string& cid) = 0;
    /// Reports that a call is held.
    /// \param unused  not used
    /// \param cid     the call
    virtual void holdCall(const std::string& unused, const std::string& cid) = 0;
    /// Reports that a held call is up again. The headset shows that it is in use; its mute indicator stays as
    /// it is.
    /// \param unused  not used
    /// \param cid     the call
    virtual void resumeCall(const std::string& unused, const std::string& cid) = 0;
    /// Reports that a call is over. The plug-in forgets it; the headset shows what is left of the others, and
    /// goes idle after the last one.
    /// \param unused  not used
    /// \param cid     the call
    virtual void endCall(const std::string& unused, const std::string& cid) = 0;

    /// Reserved. Does nothing.
    /// \param first   not used
    /// \param second  not used
    virtual void reservedCallControl13(const std::string& first, const std::string& second) = 0;

    /// Replaces all calls that the plug-in knows. Once a headset has been active since the start, the calls
    /// are shown at once.
    /// \param device_id  only logged
    /// \param calls      the calls that there are; copied
    /// \param num_calls  only logged
    virtual void callStateSync(const std::string& device_id, const std::vector<ICallInfo>& calls,
                               int num_calls) = 0;

    /// Registers the receiver of requests in place of any earlier one and calls its onListenerAttached(). A
    /// plug-in that was stopped and started again has no listener until one is registered with it.
    /// \param listener  the listener, of which the plug-in keeps a weak reference; an empty pointer
    ///                  unregisters
    virtual void setCallControlListener(const std::shared_ptr<IPluginCallControlListener>& listener) = 0;
    /// Asks for the receiver of requests.
    /// \return the registered listener; empty when there is none or the client let go of it
    virtual std::shared_ptr<IPluginCallControlListener> getCallControlListener() = 0;
};

/// The configuration side. Implemented by the plug-in; works after stop, too.
///
/// Every operation may be called from any of the client's threads, several at once. [host thread]
class IPluginConfigCallback {
  public:
    virtual ~IPluginConfigCallback() = default;

    /// Reserved. Does nothing.
    /// \param value  not used
    virtual void reservedConfig1(bool value) = 0;
    /// Reserved.
    /// \return false
    virtual bool reservedConfig2() = 0;
    /// Reserved.
    /// \param first   not used
    /// \param second  not used
    /// \return 0
    virtual int reservedConfig3(const std::string& first, int second) = 0;
    /// Reserved.
    /// \return false
    virtual bool reservedConfig4() = 0;

    /// Asks for the model name of the active headset. Third-party headsets have none, so false is the usual
    /// answer.
    /// \param device_id   the client's id of the audio device, or a longer text that contains it
    /// \param[out] model  the model name, empty if there is none; left alone when `device_id` is not the
    ///                    active headset's
    /// \param unused      not used
    /// \return true when `device_id` is the active headset's and its model name is known
    virtual bool getHeadsetModel(const std::string& device_id, std::string& model, int unused) = 0;

    /// Reserved.
    /// \param first   not used
    /// \param second  not used
    /// \return 0
    virtual int reservedConfig6(const std::string& first, const std::string& second) = 0;
    /// Reserved.
    /// \return false
    virtual bool reservedConfig7() = 0;

    /// Takes the client's do-not-disturb state. It is logged; headsets are not told.
    /// \param unused  not used
    /// \param value   logged, not interpreted
    virtual void setDoNotDisturb(const std::string& unused, int value) = 0;

    /// Reserved.
    /// \param argument  not used
    /// \return false
    virtual bool reservedConfig9(const std::string& argument) = 0;
    /// Reserved.
    /// \param argument  not used
    /// \return false
    virtual bool reservedConfig10(const std::string& argument) = 0;
    /// Reserved.
    /// \param first   not used
    /// \param second  not used
    /// \return 0
    virtual int reservedConfig11(const std::string& first, const std::string& second) = 0;
    /// Reserved. Does nothing.
    /// \param argument  not used
    virtual void reservedConfig12(const std::string& argument) = 0;

    /// Installs a test that can keep headsets out. It is asked whenever the plug-in looks for headsets
    /// [message thread], so that it takes effect when a device next comes or goes. What it throws ends that
    /// one look. The hook outlives stop.
    ///
    /// **The hook runs under the plug-in's lock and must not wait for another thread.** That thread may be in
    /// a call of the plug-in, which waits for the lock: neither would go on.
    /// \param hook  gets USB vendor and product id and returns false to have the headset ignored; copied. An
    ///              empty function admits every headset.
    virtual void registerDeviceAvailabilityHook(const std::function<bool(int, int)>& hook) = 0;

    /// Registers the receiver of configuration keys in place of any earlier one, and calls nothing yet. A
    /// plug-in that was stopped and started again has no listener until one is registered with it.
    /// \param listener  the listener, of which the plug-in keeps a weak reference; an empty pointer
    ///                  unregisters
    virtual void setConfigListener(const std::shared_ptr<IPluginConfigListener>& listener) = 0;
    /// Asks for the receiver of configuration keys.
    /// \return the registered listener; empty when there is none or the client let go of it
    virtual std::shared_ptr<IPluginConfigListener> getConfigListener() = 0;

    /// Reserved. Does nothing.
    /// \param value  not used
    virtual void reservedConfig16(bool value) = 0;
    /// Reserved. Does nothing.
    virtual void reservedConfig17() = 0;
};

/// Starts the plug-in, or finds it running, and returns its call-control side. [host thread]
///
/// The first call, and the first after stopPluginControl(), starts the plug-in; headsets are found meanwhile.
/// A later call returns the same object. The plug-in keeps running when the client lets go of it, until
/// stopPluginControl(). Two first calls, or a call and a stop, must not run at the same time.
/// \param logger  the client's log, of which the plug-in keeps a weak reference when this call starts it;
///                ignored otherwise. An expired logger is accepted and means silence.
/// \return the call-control side, shared with the plug-in; never empty
/// \throws std::bad_alloc, std::system_error when memory or threads run out; the plug-in is then not running
ORVEX_API std::shared_ptr<IPluginCallControlCallback> createPluginControl(
    const std::weak_ptr<IPluginLogger>& logger);

/// Starts the plug-in, or finds it running, and returns its configuration side: the same object as
/// createPluginControl() returns, under the same rules. [host thread]
/// \param logger  as in createPluginControl()
/// \return the configuration side, shared with the plug-in; never empty
/// \throws std::bad_alloc, std::system_error when memory or threads run out; the plug-in is then not running
ORVEX_API std::shared_ptr<IPluginConfigCallback> createPluginConfig(
    const std::weak_ptr<IPluginLogger>& logger);

/// Stops the plug-in: the active headset goes idle, every headset is let go, the threads end. [host thread]
///
/// May be called again, without a start before, and from inside any callback but the logger; a callback that
/// runs on another thread meanwhile is not waited for. What the logger throws comes out of here; the plug-in
/// can be started again all the same. A client that exits or unloads the library without a stop does no harm.
ORVEX_API void stopPluginControl();

}  // namespace plugin_control

extern "C" {

/// plugin_control::createPluginControl() for a client that looks functions up by name. [host thread]
///
/// No operation may be under way on another thread when the plug-in is stopped: nothing would keep the object
/// that it works on.
/// \param logger  points to the client's weak reference, which is copied
/// \return the call-control side, owned by the plug-in: valid until stopPluginControlFacade(), never to be
///         deleted. Null when the logger is gone or was never set, when memory or threads run out, or when
///         the logger throws; nothing is started by that call then.
ORVEX_API plugin_control::IPluginCallControlCallback* createPluginControlFacade(
    std::weak_ptr<plugin_control::IPluginLogger>* logger);

/// plugin_control::createPluginConfig() for a client that looks functions up by name. [host thread]
///
/// No operation may be under way on another thread when the plug-in is stopped.
/// \param logger  points to the client's weak reference, which is copied
/// \return the configuration side, under the conditions of createPluginControlFacade()
ORVEX_API plugin_control::IPluginConfigCallback* createPluginConfigFacade(
    std::weak_ptr<plugin_control::IPluginLogger>* logger);

/// plugin_control::stopPluginControl() for a client that looks functions up by name; what the logger throws
/// ends here. [host thread]
ORVEX_API void stopPluginControlFacade(void);

}  // extern "C"
