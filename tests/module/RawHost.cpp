// SPDX-License-Identifier: AGPL-3.0-or-later
#include "module/RawHost.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string_view>

#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace rawHost
{
namespace Linux = Steinberg::Linux;
using Steinberg::FUnknown;
using Steinberg::IBStream;
using Steinberg::int32;
using Steinberg::int64;
using Steinberg::IPlugFrame;
using Steinberg::IPluginFactory;
using Steinberg::kNoInterface;
using Steinberg::kNotImplemented;
using Steinberg::kResultFalse;
using Steinberg::kResultOk;
using Steinberg::tresult;
using Steinberg::TUID;

namespace
{
[[nodiscard]] bool isOneOf (const TUID wanted, std::initializer_list<const TUID*> known)
{
    return std::any_of (known.begin(), known.end(),
                        [&] (const TUID* iid) { return Steinberg::FUnknownPrivate::iidEqual (wanted, *iid); });
}

template <typename Interface>
[[nodiscard]] tresult give (Interface* object, void** result)
{
    object->addRef();
    *result = object;
    return kResultOk;
}

[[nodiscard]] tresult giveNothing (void** result)
{
    *result = nullptr;
    return kNoInterface;
}

template <typename Interface>
[[nodiscard]] IPtr<Interface> query (FUnknown& object, const TUID& iid)
{
    void* result = nullptr;
    return object.queryInterface (iid, &result) == kResultOk ? IPtr<Interface> (static_cast<Interface*> (result), false)
                                                             : IPtr<Interface>();
}

template <typename Interface>
[[nodiscard]] IPtr<Interface> create (IPluginFactory& factory, const TUID& classId, const TUID& iid)
{
    void* result = nullptr;

    if (factory.createInstance (classId, iid, &result) != kResultOk)
        throw std::runtime_error ("the factory makes no instance");

    return { static_cast<Interface*> (result), false };
}

template <typename Function>
[[nodiscard]] Function symbol (void* library, const char* name)
{
    return reinterpret_cast<Function> (dlsym (library, name));
}

void connect (FUnknown& from, FUnknown& to)
{
    const auto source = query<vst::IConnectionPoint> (from, vst::IConnectionPoint_iid);
    const auto target = query<vst::IConnectionPoint> (to, vst::IConnectionPoint_iid);

    if (source != nullptr && target != nullptr)
        source->connect (target);
}

void disconnect (FUnknown& from, FUnknown& to)
{
    const auto source = query<vst::IConnectionPoint> (from, vst::IConnectionPoint_iid);
    const auto target = query<vst::IConnectionPoint> (to, vst::IConnectionPoint_iid);

    if (source != nullptr && target != nullptr)
        source->disconnect (target);
}
} // namespace

tresult Context::queryInterface (const TUID wanted, void** object)
{
    if (isOneOf (wanted, { &vst::IHostApplication_iid, &Steinberg::FUnknown_iid }))
        return give (static_cast<vst::IHostApplication*> (this), object);

    if (isOneOf (wanted, { &vst::IComponentHandler_iid }))
        return give (static_cast<vst::IComponentHandler*> (this), object);

    if (isOneOf (wanted, { &Steinberg::IPlugFrame_iid }))
        return give (static_cast<IPlugFrame*> (this), object);

    if (hasRunLoop && isOneOf (wanted, { &Linux::IRunLoop_iid }))
        return give (static_cast<Linux::IRunLoop*> (this), object);

    return giveNothing (object);
}

tresult Context::getName (vst::String128 name)
{
    constexpr Steinberg::char16 text[] { 'R', 'a', 'w', 0 };
    std::copy (std::begin (text), std::end (text), name);
    return kResultOk;
}

tresult Context::createInstance (TUID, TUID, void** object)
{
    *object = nullptr;
    return kNotImplemented;
}

tresult Context::resizeView (Steinberg::IPlugView* view, Steinberg::ViewRect* size) { return view->onSize (size); }

tresult Context::registerEventHandler (Linux::IEventHandler* handler, Linux::FileDescriptor descriptor)
{
    handlers[descriptor] = handler;
    return kResultOk;
}

tresult Context::unregisterEventHandler (Linux::IEventHandler* handler)
{
    for (auto place = handlers.begin(); place != handlers.end();)
        place = place->second.get() == handler ? handlers.erase (place) : std::next (place);

    return kResultOk;
}

tresult Context::registerTimer (Linux::ITimerHandler*, Linux::TimerInterval) { return kNotImplemented; }
tresult Context::unregisterTimer (Linux::ITimerHandler*) { return kNotImplemented; }

namespace
{
bool isDisplay (Linux::FileDescriptor descriptor)
{
    sockaddr_un server {};
    socklen_t size = sizeof (server);

    if (getpeername (descriptor, reinterpret_cast<sockaddr*> (&server), &size) != 0 || server.sun_family != AF_UNIX)
        return false;

    // The name may begin with a zero.
    const std::string_view name (server.sun_path, sizeof (server.sun_path));
    return name.find ("X11-unix") != std::string_view::npos;
}
} // namespace

void Context::runMessages (int milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds (milliseconds);

    while (Clock::now() < end)
    {
        std::vector<pollfd> waiting;

        for (const auto& [descriptor, handler] : handlers)
            if (watchesDisplay || ! isDisplay (descriptor))
                waiting.push_back ({ descriptor, POLLIN, 0 });

        poll (waiting.data(), (nfds_t) waiting.size(), 5);

        for (const auto& ready : waiting)
        {
            // A handler may take itself or others off the list.
            if (const auto place = handlers.find (ready.fd); ready.revents != 0 && place != handlers.end())
            {
                const auto handler = place->second;
                handler->onFDIsSet (ready.fd);
            }
        }
    }
}

tresult Stream::queryInterface (const TUID wanted, void** object)
{
    return isOneOf (wanted, { &Steinberg::IBStream_iid, &Steinberg::FUnknown_iid })
               ? give (static_cast<IBStream*> (this), object)
               : giveNothing (object);
}

tresult Stream::read (void* buffer, int32 numBytes, int32* numRead)
{
    const auto size = std::min ((std::size_t) std::max (numBytes, 0), bytes.size() - position);
    std::copy_n (bytes.data() + position, size, static_cast<char*> (buffer));
    position += size;

    if (numRead != nullptr)
        *numRead = (int32) size;

    return kResultOk;
}

tresult Stream::write (void* buffer, int32 numBytes, int32* numWritten)
{
    const auto size = (std::size_t) std::max (numBytes, 0);
    bytes.replace (position, std::min (size, bytes.size() - position), static_cast<const char*> (buffer), size);
    position += size;

    if (numWritten != nullptr)
        *numWritten = numBytes;

    return kResultOk;
}

tresult Stream::seek (int64 offset, int32 mode, int64* result)
{
    const auto base = mode == kIBSeekSet ? 0 : (int64) (mode == kIBSeekCur ? position : bytes.size());
    position = (std::size_t) std::clamp (base + offset, (int64) 0, (int64) bytes.size());
    return result != nullptr ? tell (result) : kResultOk;
}

tresult Stream::tell (int64* result)
{
    *result = (int64) position;
    return kResultOk;
}

tresult Queue::queryInterface (const TUID wanted, void** object)
{
    return isOneOf (wanted, { &vst::IParamValueQueue_iid, &Steinberg::FUnknown_iid })
               ? give (static_cast<vst::IParamValueQueue*> (this), object)
               : giveNothing (object);
}

tresult Queue::getPoint (int32 index, int32& frame, vst::ParamValue& value)
{
    if (index < 0 || index >= getPointCount())
        return kResultFalse;

    frame = points[(std::size_t) index].frame;
    value = points[(std::size_t) index].value;
    return kResultOk;
}

tresult Queue::addPoint (int32, vst::ParamValue, int32&) { return kResultFalse; }

tresult Changes::queryInterface (const TUID wanted, void** object)
{
    return isOneOf (wanted, { &vst::IParameterChanges_iid, &Steinberg::FUnknown_iid })
               ? give (static_cast<vst::IParameterChanges*> (this), object)
               : giveNothing (object);
}

vst::IParamValueQueue* Changes::getParameterData (int32 index)
{
    return index >= 0 && index < getParameterCount() ? &queues[(std::size_t) index] : nullptr;
}

void Changes::add (vst::ParamID parameter, std::vector<Point> points)
{
    queues.emplace_back (parameter);
    queues.back().points = std::move (points);
}

Module::Module (const std::string& library) : handle (dlopen (library.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (handle == nullptr)
        throw std::runtime_error (dlerror());

    symbol<bool (*) (void*)> (handle, "ModuleEntry") (handle);
    factory = IPtr<IPluginFactory> (symbol<IPluginFactory* (*) ()> (handle, "GetPluginFactory")(), false);
}

Module::~Module()
{
    factory = nullptr;
    symbol<bool (*)()> (handle, "ModuleExit")();
    dlclose (handle);
}

Block::Block (int numChannels, int frames)
    : input ((std::size_t) numChannels, std::vector<float> ((std::size_t) frames)), output (input), numFrames (frames)
{
}

void Block::fillWithNoise (std::uint32_t seed, float amplitude)
{
    std::mt19937 generator (seed);

    for (std::size_t frame = 0; frame < (std::size_t) numFrames; ++frame)
        for (auto& channel : input)
            channel[frame] = amplitude * (float) ((double) generator() / 2147483648.0 - 1.0);
}

Instance::Instance (const Module& module, Context& context)
{
    const auto numClasses = module.factory->countClasses();

    for (int32 index = 0; index < numClasses && component == nullptr; ++index)
    {
        Steinberg::PClassInfo info {};
        module.factory->getClassInfo (index, &info);

        if (std::strcmp (info.category, kVstAudioEffectClass) == 0)
            component = create<vst::IComponent> (*module.factory, info.cid, vst::IComponent_iid);
    }

    if (component == nullptr || component->initialize (static_cast<vst::IHostApplication*> (&context)) != kResultOk)
        throw std::runtime_error ("no component");

    processor = query<vst::IAudioProcessor> (*component, vst::IAudioProcessor_iid);

    TUID controllerId {};
    component->getControllerClassId (controllerId);
    controller = create<vst::IEditController> (*module.factory, controllerId, vst::IEditController_iid);
    controller->initialize (static_cast<vst::IHostApplication*> (&context));
    controller->setComponentHandler (&context);
    connect (*component, *controller);
    connect (*controller, *component);
    component->activateBus (vst::kAudio, vst::kInput, 0, true);
    component->activateBus (vst::kAudio, vst::kOutput, 0, true);
}

Instance::~Instance()
{
    disconnect (*component, *controller);
    disconnect (*controller, *component);
    controller->setComponentHandler (nullptr);
    controller->terminate();
    component->terminate();
}

bool Instance::setUp (double sampleRate, int largestBlock, int mode)
{
    vst::ProcessSetup setup { mode, vst::kSample32, largestBlock, sampleRate };
    return processor->setupProcessing (setup) == kResultOk;
}

bool Instance::setChannels (int numChannels)
{
    vst::SpeakerArrangement input = numChannels == 1 ? vst::SpeakerArr::kMono : vst::SpeakerArr::kStereo;
    auto output = input;
    return processor->setBusArrangements (&input, 1, &output, 1) == kResultOk;
}

void Instance::start()
{
    component->setActive (true);
    processor->setProcessing (true);
}

void Instance::stop()
{
    processor->setProcessing (false);
    component->setActive (false);
}

tresult Instance::process (Block& block)
{
    constexpr std::size_t mostChannels = 2;
    const auto numChannels = block.input.size();
    float* inputs[mostChannels] {};
    float* outputs[mostChannels] {};

    for (std::size_t channel = 0; channel < numChannels; ++channel)
    {
        inputs[channel] = block.input[channel].data();
        outputs[channel] = block.output[channel].data();
    }

    vst::AudioBusBuffers inputBus, outputBus;
    inputBus.numChannels = outputBus.numChannels = (int32) numChannels;
    inputBus.channelBuffers32 = inputs;
    outputBus.channelBuffers32 = outputs;

    vst::ProcessData data;
    data.processMode = vst::kRealtime;
    data.symbolicSampleSize = vst::kSample32;
    data.numSamples = block.numFrames;
    data.numInputs = data.numOutputs = 1;
    data.inputs = &inputBus;
    data.outputs = &outputBus;
    data.inputParameterChanges = &block.changes;
    data.processContext = block.context;
    return processor->process (data);
}

vst::ParamID Instance::parameter (int index)
{
    vst::ParameterInfo info {};
    controller->getParameterInfo (index, info);
    return info.id;
}

std::string Instance::state()
{
    Stream stream;
    component->getState (&stream);
    return stream.bytes;
}

tresult Instance::load (const std::string& bytes)
{
    Stream stream (bytes);
    return component->setState (&stream);
}

std::string withoutDate (std::string state)
{
    constexpr std::string_view name = "date_modified=\"";

    if (const auto start = state.find (name); start != std::string::npos)
        state.erase (start, state.find ('"', start + name.size()) - start);

    return state;
}

Flaws flawsIn (const Block& block)
{
    Flaws flaws;

    for (const auto& channel : block.output)
    {
        for (const auto sample : channel)
        {
            flaws.notFinite += ! std::isfinite (sample);
            flaws.subnormal += std::fpclassify (sample) == FP_SUBNORMAL;
        }
    }

    return flaws;
}
} // namespace rawHost
