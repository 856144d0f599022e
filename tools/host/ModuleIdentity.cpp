// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ModuleIdentity.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <pluginterfaces/base/ipluginbase.h>

#include "host/HostError.h"
#include "host/ModuleLoader.h"

namespace
{
/** The module's library, open as long as this object lives. JUCE's own hosting does not give access to the factory. */
class OpenLibrary
{
public:
    explicit OpenLibrary (const juce::File& module)
    {
        if (! library.open (moduleLoader::libraryOf (module).getFullPathName()))
            throw HostError (module.getFullPathName() + ": cannot be loaded");

        if (auto* enter = reinterpret_cast<bool (*) (void*)> (library.getFunction ("ModuleEntry")))
            enter (library.getNativeHandle());
    }

    ~OpenLibrary()
    {
        if (auto* leave = reinterpret_cast<bool (*)()> (library.getFunction ("ModuleExit")))
            leave();
    }

    /** The caller owns one reference; null if there is no factory. */
    [[nodiscard]] Steinberg::IPluginFactory* factory()
    {
        auto* make =
            reinterpret_cast<Steinberg::IPluginFactory*(PLUGIN_API*) ()> (library.getFunction ("GetPluginFactory"));
        return make != nullptr ? make() : nullptr;
    }

private:
    juce::DynamicLibrary library;

    JUCE_DECLARE_NON_COPYABLE (OpenLibrary)
};

struct Release
{
    void operator() (Steinberg::FUnknown* object) const { object->release(); }
};

template <typename Interface>
using Held = std::unique_ptr<Interface, Release>;

template <typename Interface>
Held<Interface> ask (Steinberg::IPluginFactory& factory, const Steinberg::TUID& iid)
{
    void* object = nullptr;

    if (factory.queryInterface (iid, &object) != Steinberg::kResultOk)
        return nullptr;

    return Held<Interface> (static_cast<Interface*> (object));
}

[[nodiscard]] juce::String textOf (const char* characters, std::size_t capacity)
{
    const auto* end = std::find (characters, characters + capacity, '\0');
    return juce::String::fromUTF8 (characters, (int) (end - characters));
}

[[nodiscard]] juce::String textOf (const Steinberg::char16* characters, std::size_t capacity)
{
    juce::String text;

    for (std::size_t index = 0; index < capacity && characters[index] != 0; ++index)
        text += (juce::juce_wchar) characters[index];

    return text;
}

template <typename Character, std::size_t capacity>
juce::String textOf (const Character (&characters)[capacity])
{
    return textOf (characters, capacity);
}

[[nodiscard]] juce::String idOf (const Steinberg::TUID& id)
{
    return juce::String::toHexString (id, (int) sizeof (id), 0).toUpperCase();
}

template <typename Info>
ModuleIdentity::ClassInfo describe (const Info& info)
{
    return { idOf (info.cid),      textOf (info.name),    textOf (info.category),   textOf (info.subCategories),
             textOf (info.vendor), textOf (info.version), textOf (info.sdkVersion), info.cardinality,
             info.classFlags };
}

/** The newest description that the factory knows to give. */
ModuleIdentity::ClassInfo describeClass (Steinberg::IPluginFactory& factory, Steinberg::int32 index)
{
    if (const auto third = ask<Steinberg::IPluginFactory3> (factory, Steinberg::IPluginFactory3_iid))
        if (Steinberg::PClassInfoW info {}; third->getClassInfoUnicode (index, &info) == Steinberg::kResultOk)
            return describe (info);

    if (const auto second = ask<Steinberg::IPluginFactory2> (factory, Steinberg::IPluginFactory2_iid))
        if (Steinberg::PClassInfo2 info {}; second->getClassInfo2 (index, &info) == Steinberg::kResultOk)
            return describe (info);

    ModuleIdentity::ClassInfo result;

    if (Steinberg::PClassInfo info {}; factory.getClassInfo (index, &info) == Steinberg::kResultOk)
    {
        result.id = idOf (info.cid);
        result.name = textOf (info.name);
        result.category = textOf (info.category);
        result.cardinality = info.cardinality;
    }

    return result;
}

[[nodiscard]] juce::String line (const juce::String& label, const juce::String& value)
{
    return label.paddedRight (' ', 18) + value + "\n";
}
} // namespace

ModuleIdentity ModuleIdentity::read (const juce::File& module)
{
    OpenLibrary library (module);
    const Held<Steinberg::IPluginFactory> factory (library.factory());

    if (factory == nullptr)
        throw HostError (module.getFullPathName() + ": has no VST3 factory");

    ModuleIdentity identity;

    if (Steinberg::PFactoryInfo info {}; factory->getFactoryInfo (&info) == Steinberg::kResultOk)
    {
        identity.vendor = textOf (info.vendor);
        identity.url = textOf (info.url);
        identity.email = textOf (info.email);
        identity.factoryFlags = info.flags;
    }

    for (Steinberg::int32 index = 0; index < factory->countClasses(); ++index)
        identity.classes.push_back (describeClass (*factory, index));

    return identity;
}

juce::String ModuleIdentity::toText() const
{
    auto text = line ("vendor", vendor) + line ("url", url) + line ("e-mail", email)
                + line ("factory flags", "0x" + juce::String::toHexString (factoryFlags));

    for (const auto& info : classes)
    {
        text += "\n" + line ("class", info.category) + line ("  id", info.id) + line ("  name", info.name)
                + line ("  sub-categories", info.subCategories) + line ("  vendor", info.vendor)
                + line ("  version", info.version) + line ("  SDK version", info.sdkVersion)
                + line ("  flags", "0x" + juce::String::toHexString ((int) info.classFlags));
    }

    return text;
}

juce::String ModuleIdentity::toJson() const
{
    juce::Array<juce::var> classList;

    for (const auto& info : classes)
    {
        const juce::DynamicObject::Ptr object (new juce::DynamicObject);
        object->setProperty ("category", info.category);
        object->setProperty ("id", info.id);
        object->setProperty ("name", info.name);
        object->setProperty ("subCategories", info.subCategories);
        object->setProperty ("vendor", info.vendor);
        object->setProperty ("version", info.version);
        object->setProperty ("sdkVersion", info.sdkVersion);
        object->setProperty ("cardinality", info.cardinality);
        object->setProperty ("classFlags", (juce::int64) info.classFlags);
        classList.add (object.get());
    }

    const juce::DynamicObject::Ptr object (new juce::DynamicObject);
    object->setProperty ("vendor", vendor);
    object->setProperty ("url", url);
    object->setProperty ("email", email);
    object->setProperty ("factoryFlags", factoryFlags);
    object->setProperty ("classes", classList);
    return juce::JSON::toString (juce::var (object.get())) + "\n";
}
