// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "link/Introspection.h"

#include "wire/BatteryReport.h"
#include "wire/ChargerInterface.h"

namespace velmora {

namespace {

constexpr auto documentType =
    "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n";

constexpr auto standardInterfaces = R"( <interface name="org.freedesktop.DBus.Peer">
  <method name="Ping"/>
  <method name="GetMachineId">
   <arg name="machine_uuid" type="s" direction="out"/>
  </method>
 </interface>
 <interface name="org.freedesktop.DBus.Introspectable">
  <method name="Introspect">
   <arg name="xml_data" type="s" direction="out"/>
  </method>
 </interface>
 <interface name="org.freedesktop.DBus.Properties">
  <method name="Get">
   <arg name="interface_name" type="s" direction="in"/>
   <arg name="property_name" type="s" direction="in"/>
   <arg name="value" type="v" direction="out"/>
  </method>
  <method name="GetAll">
   <arg name="interface_name" type="s" direction="in"/>
   <arg name="properties" type="a{sv}" direction="out"/>
  </method>
  <method name="Set">
   <arg name="interface_name" type="s" direction="in"/>
   <arg name="property_name" type="s" direction="in"/>
   <arg name="value" type="v" direction="in"/>
  </method>
  <signal name="PropertiesChanged">
   <arg name="interface_name" type="s"/>
   <arg name="changed_properties" type="a{sv}"/>
   <arg name="invalidated_properties" type="as"/>
  </signal>
 </interface>
)";

constexpr auto objectManager = R"( <interface name="org.freedesktop.DBus.ObjectManager">
  <method name="GetManagedObjects">
   <arg name="objects" type="a{oa{sa{sv}}}" direction="out"/>
  </method>
  <signal name="InterfacesAdded">
   <arg name="object" type="o"/>
   <arg name="interfaces" type="a{sa{sv}}"/>
  </signal>
  <signal name="InterfacesRemoved">
   <arg name="object" type="o"/>
   <arg name="interfaces" type="as"/>
  </signal>
 </interface>
)";

std::string node(const std::string& contents)
{
    return std::string(documentType) + "<node>\n" + standardInterfaces + contents + "</node>\n";
}

std::string attribute(const char* name, const std::string& value)
{
    return std::string(" ") + name + "=\"" + value + "\""; // our own names: nothing in them needs escaping
}

std::string interface(const char* name, const std::string& members)
{
    return " <interface" + attribute("name", name) + ">\n" + members + " </interface>\n";
}

std::string annotation(const char* name, const std::string& value)
{
    return "   <annotation" + attribute("name", name) + attribute("value", value) + "/>\n";
}

std::string arguments(std::span<const wire::Argument> list, const std::string& direction)
{
    std::string xml;
    for (const auto& [name, type] : list)
        xml += "   <arg" + attribute("name", name) + attribute("type", type) + direction + "/>\n";
    return xml;
}

/// A plain name, as those of app.velmora.Charger, is no selector.
std::string selector(const wire::Message& message)
{
    const std::string name = message.selector;
    return name.ends_with(':') ? annotation("app.velmora.Selector", name) : "";
}

std::string method(const wire::Message& message)
{
    std::string xml = "  <method" + attribute("name", message.member()) + ">\n";
    xml += arguments(message.arguments, attribute("direction", "in"));
    xml += arguments(message.reply, attribute("direction", "out"));
    xml += selector(message);
    if (message.reply.empty()) xml += annotation("org.freedesktop.DBus.Method.NoReply", "true");
    return xml + "  </method>\n";
}

std::string methods(std::span<const wire::Message* const> messages)
{
    std::string xml;
    for (const auto* message : messages) xml += method(*message);
    return xml;
}

std::string signal(const wire::Message& message)
{
    return "  <signal" + attribute("name", message.member()) + ">\n" + arguments(message.arguments, "") +
           selector(message) + "  </signal>\n";
}

std::string properties(const auto& table)
{
    std::string xml;
    for (const auto& property : table)
        xml += "  <property" + attribute("name", property.name) + attribute("type", property.type()) +
               attribute("access", "read") + ">\n" +
               annotation("org.freedesktop.DBus.Property.EmitsChangedSignal", "true") + "  </property>\n";
    return xml;
}

} // namespace

std::string daemonIntrospection()
{
    using namespace wire;
    const auto chargerMembers = methods(charger::messages) + signal(charger::settingsChanged) +
                                signal(charger::changeRefused) + signal(charger::occurred) +
                                properties(chargerProperties);
    return node(interface(daemon_protocol::interface, methods(daemon_protocol::messages)) +
                interface(client_protocol::interface, signal(client_protocol::batteryStateDidChange)) +
                interface(charger::interface, chargerMembers));
}

std::string batteryIntrospection()
{
    return node(interface(BatteryReport::interface, properties(batteryProperties)));
}

std::string batteryFolderIntrospection(const std::vector<std::string>& children)
{
    std::string xml = objectManager;
    for (const auto& child : children) xml += " <node" + attribute("name", child) + "/>\n";
    return node(xml);
}

} // namespace velmora
