// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <pluginterfaces/base/ibstream.h>
#include <pluginterfaces/base/ipluginbase.h>
#include <pluginterfaces/base/smartpointer.h>
#include <pluginterfaces/gui/iplugview.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivstcomponent.h>
#include <pluginterfaces/vst/ivsteditcontroller.h>
#include <pluginterfaces/vst/ivsthostapplication.h>
#include <pluginterfaces/vst/ivstmessage.h>
#include <pluginterfaces/vst/ivstparameterchanges.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>

/** A host written against the VST3 interfaces alone. It does things that no well-meaning host does. */
namespace rawHost
{
namespace vst = Steinberg::Vst;
using Steinberg::IPtr;

/** Everything that a module may ask of its host: it is the application, the run loop, the frame around the window and the
    receiver of edits. Counts its references, so that a test sees whether the module has released all of them. */
class Context final : public vst::IHostApplication,
                      public vst::IComponentHandler,
                      public Steinberg::IPlugFrame,
                      public Steinberg::Linux::IRunLoop
{
public:
    Steinberg::tresult PLUGIN_API queryInterface (const Steinberg::TUID wanted, void** object) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return (Steinberg::uint32) ++references; }
    Steinberg::uint32 PLUGIN_API release() override { return (Steinberg::uint32) --references; }

    Steinberg::tresult PLUGIN_API getName (vst::String128 name) override;
    Steinberg::tresult PLUGIN_API createInstance (Steinberg::TUID, Steinberg::TUID, void** object) override;

    Steinberg::tresult PLUGIN_API beginEdit (vst::ParamID) override { return Steinberg::kResultOk; }
    Steinberg::tresult PLUGIN_API performEdit (vst::ParamID, vst::ParamValue) override { return Steinberg::kResultOk; }
    Steinberg::tresult PLUGIN_API endEdit (vst::ParamID) override { return Steinberg::kResultOk; }
    Steinberg::tresult PLUGIN_API restartComponent (Steinberg::int32) override { return Steinberg::kResultOk; }

    Steinberg::tresult PLUGIN_API resizeView (Steinberg::IPlugView* view, Steinberg::ViewRect* size) override;

    Steinberg::tresult PLUGIN_API registerEventHandler (Steinberg::Linux::IEventHandler* handler,
                                                        Steinberg::Linux::FileDescriptor descriptor) override;
    Steinberg::tresult PLUGIN_API unregisterEventHandler (Steinberg::Linux::IEventHandler* handler) override;
    Steinberg::tresult PLUGIN_API registerTimer (Steinberg::Linux::ITimerHandler*,
                                                 Steinberg::Linux::TimerInterval) override;
    Steinberg::tresult PLUGIN_API unregisterTimer (Steinberg::Linux::ITimerHandler*) override;

    /** Lets the module's messages and timers run on the calling thread. */
    void runMessages (int milliseconds);

    /** False: the module finds no run loop and has to help itself. */
    bool hasRunLoop = true;

    /** False: nobody tells the module that the display has sent something. */
    bool watchesDisplay = true;
    std::atomic<int> references { 0 };

private:
    std::map<Steinberg::Linux::FileDescriptor, IPtr<Steinberg::Linux::IEventHandler>> handlers;
};

/** A block of bytes as the state functions take it. Lives on the stack of a test. */
class Stream final : public Steinberg::IBStream
{
public:
    Stream() = default;
    explicit Stream (std::string content) : bytes (std::move (content)) {}

    Steinberg::tresult PLUGIN_API queryInterface (const Steinberg::TUID wanted, void** object) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

    Steinberg::tresult PLUGIN_API read (void* buffer, Steinberg::int32 numBytes, Steinberg::int32* numRead) override;
    Steinberg::tresult PLUGIN_API write (void* buffer, Steinberg::int32 numBytes,
                                         Steinberg::int32* numWritten) override;
    Steinberg::tresult PLUGIN_API seek (Steinberg::int64 offset, Steinberg::int32 mode,
                                        Steinberg::int64* result) override;
    Steinberg::tresult PLUGIN_API tell (Steinberg::int64* result) override;

    std::string bytes;

private:
    std::size_t position = 0;
};

struct Point
{
    int frame = 0;
    double value = 0.0;
};

/** One parameter's automation in a block. */
class Queue final : public vst::IParamValueQueue
{
public:
    explicit Queue (vst::ParamID parameter) : id (parameter) {}

    Steinberg::tresult PLUGIN_API queryInterface (const Steinberg::TUID wanted, void** object) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

    vst::ParamID PLUGIN_API getParameterId() override { return id; }
    Steinberg::int32 PLUGIN_API getPointCount() override { return (Steinberg::int32) points.size(); }
    Steinberg::tresult PLUGIN_API getPoint (Steinberg::int32 index, Steinberg::int32& frame,
                                            vst::ParamValue& value) override;
    Steinberg::tresult PLUGIN_API addPoint (Steinberg::int32 frame, vst::ParamValue value,
                                            Steinberg::int32& index) override;

    std::vector<Point> points;

private:
    vst::ParamID id;
};

/** The automation of a block. Made before the block is processed: nothing here allocates while the module reads it. */
class Changes final : public vst::IParameterChanges
{
public:
    Steinberg::tresult PLUGIN_API queryInterface (const Steinberg::TUID wanted, void** object) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

    Steinberg::int32 PLUGIN_API getParameterCount() override { return (Steinberg::int32) queues.size(); }
    vst::IParamValueQueue* PLUGIN_API getParameterData (Steinberg::int32 index) override;

    /** For the module's own changes. It always fails, and the module must cope with that. */
    vst::IParamValueQueue* PLUGIN_API addParameterData (const vst::ParamID&, Steinberg::int32&) override
    {
        return nullptr;
    }

    void add (vst::ParamID parameter, std::vector<Point> points);
    void clear() { queues.clear(); }

private:
    std::vector<Queue> queues;
};

/** The loaded library and its factory. */
class Module
{
public:
    /** @param library  the shared library inside the bundle */
    explicit Module (const std::string& library);
    ~Module();
    Module (const Module&) = delete;
    Module& operator= (const Module&) = delete;

    IPtr<Steinberg::IPluginFactory> factory;

private:
    void* handle = nullptr;
};

/** Audio and automation of one call. Inputs and outputs are apart; process in place by sharing the pointers. */
struct Block
{
    Block (int numChannels, int numFrames);

    /** White noise below full scale. */
    void fillWithNoise (std::uint32_t seed, float amplitude = 0.8f);

    std::vector<std::vector<float>> input, output;
    Changes changes;
    vst::ProcessContext* context = nullptr;
    int numFrames;
};

/** Component, processor and controller of one instance, connected to each other. */
class Instance
{
public:
    Instance (const Module& module, Context& context);

    /** Releases everything in the order in which hosts do, in any state of the instance. */
    ~Instance();
    Instance (const Instance&) = delete;
    Instance& operator= (const Instance&) = delete;

    [[nodiscard]] bool setUp (double sampleRate, int largestBlock, int mode = vst::kRealtime);
    [[nodiscard]] bool setChannels (int numChannels);
    void start();
    void stop();

    /** Sends a block through. */
    [[nodiscard]] Steinberg::tresult process (Block& block);

    /** The number of the parameter at this place in the module's list. */
    [[nodiscard]] vst::ParamID parameter (int index);
    [[nodiscard]] int numParameters() { return controller->getParameterCount(); }

    [[nodiscard]] std::string state();
    [[nodiscard]] Steinberg::tresult load (const std::string& bytes);

    IPtr<vst::IComponent> component;
    IPtr<vst::IAudioProcessor> processor;
    IPtr<vst::IEditController> controller;
};

/** The state's bytes without the value of its date, which differs from save to save. */
[[nodiscard]] std::string withoutDate (std::string state);

/** What must never come out of finite input. */
struct Flaws
{
    long notFinite = 0;
    long subnormal = 0;

    [[nodiscard]] bool operator== (const Flaws&) const = default;
};

[[nodiscard]] Flaws flawsIn (const Block& block);
} // namespace rawHost
