// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/ThermalFamily.h"

#include <cstring>
#include <linux/genetlink.h>
#include <linux/netlink.h>
#include <linux/thermal.h>
#include <string_view>

namespace velmora::thermal_family {

namespace {

using Bytes = std::span<const char>;

/// The number at the beginning; 0 where there are too few bytes.
template <typename Number>
Number numberIn(Bytes bytes)
{
    Number number{};
    if (bytes.size() >= sizeof number) std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

std::string_view textIn(Bytes bytes)
{
    const std::string_view all(bytes.data(), bytes.size());
    return all.substr(0, all.find('\0'));
}

template <typename Structure>
std::string bytesOf(const Structure& structure)
{
    return {reinterpret_cast<const char*>(&structure), sizeof structure};
}

/// Calls `use` with type and contents of each attribute in `bytes`; ends at one that cannot be.
template <typename Use>
void forEachAttribute(Bytes bytes, const Use& use)
{
    while (bytes.size() >= NLA_HDRLEN) {
        const auto head = numberIn<nlattr>(bytes);
        if (head.nla_len < NLA_HDRLEN || head.nla_len > bytes.size()) return;
        use(head.nla_type & NLA_TYPE_MASK, bytes.subspan(NLA_HDRLEN, head.nla_len - NLA_HDRLEN));
        const std::size_t step = NLA_ALIGN(head.nla_len);
        if (step >= bytes.size()) return;
        bytes = bytes.subspan(step);
    }
}

void findEventGroup(Bytes group, std::optional<std::uint32_t>& found)
{
    std::string_view name;
    std::uint32_t number = 0;
    forEachAttribute(group, [&](int type, Bytes value) {
        if (type == CTRL_ATTR_MCAST_GRP_NAME) name = textIn(value);
        if (type == CTRL_ATTR_MCAST_GRP_ID) number = numberIn<std::uint32_t>(value);
    });
    if (name == THERMAL_GENL_EVENT_GROUP_NAME && number > 0) found = number;
}

} // namespace

std::string question()
{
    const std::string name(THERMAL_GENL_FAMILY_NAME, sizeof THERMAL_GENL_FAMILY_NAME); // with its end
    nlattr attribute{};
    attribute.nla_len = static_cast<std::uint16_t>(NLA_HDRLEN + name.size());
    attribute.nla_type = CTRL_ATTR_FAMILY_NAME;
    genlmsghdr command{};
    command.cmd = CTRL_CMD_GETFAMILY;
    command.version = 1;
    std::string body = bytesOf(command) + bytesOf(attribute) + name;
    body.resize(NLMSG_ALIGN(body.size()));
    nlmsghdr head{};
    head.nlmsg_len = static_cast<std::uint32_t>(NLMSG_HDRLEN + body.size());
    head.nlmsg_type = GENL_ID_CTRL;
    head.nlmsg_flags = NLM_F_REQUEST;
    return bytesOf(head) + body;
}

std::optional<std::uint32_t> eventGroup(Bytes answer)
{
    const auto head = numberIn<nlmsghdr>(answer);
    const std::size_t before = NLMSG_HDRLEN + GENL_HDRLEN;
    if (head.nlmsg_type != GENL_ID_CTRL || head.nlmsg_len < before || head.nlmsg_len > answer.size())
        return std::nullopt;
    std::optional<std::uint32_t> found;
    forEachAttribute(answer.first(head.nlmsg_len).subspan(before), [&](int type, Bytes value) {
        if (type != CTRL_ATTR_MCAST_GROUPS) return;
        forEachAttribute(value, [&](int, Bytes group) { findEventGroup(group, found); });
    });
    return found;
}

} // namespace velmora::thermal_family
