// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/agent/notifications.h"

#include <algorithm>
#include <iterator>

namespace switchlab::agent {
namespace {

// clang-format off
constexpr Notification notifications[] = {
    {0, "coldStart", ".1.3.6.1.6.3.1.1.5.1"},
    {1, "warmStart", ".1.3.6.1.6.3.1.1.5.2"},
    {2, "linkDown", ".1.3.6.1.6.3.1.1.5.3"},
    {3, "linkUp", ".1.3.6.1.6.3.1.1.5.4"},
    {4, "authenticationFailure", ".1.3.6.1.6.3.1.1.5.5"},
    {5, "swLoginFailedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.5"},
    {6, "swLoginSuccessEvent", ".1.3.6.1.4.1.64711.3.5.201.0.6"},
    {7, "swStackAttachEvent", ".1.3.6.1.4.1.64711.3.5.201.0.7"},
    {8, "swStackDetachEvent", ".1.3.6.1.4.1.64711.3.5.201.0.8"},
    {9, "swIpIllegalEvent", ".1.3.6.1.4.1.64711.3.5.201.0.9"},
    {10, "swSfpChangedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.10"},
    {11, "swConfigChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.11"},
    {12, "swConfigSavedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.12"},
    {13, "swFanFailEvent", ".1.3.6.1.4.1.64711.3.5.201.0.13"},
    {14, "swTrapsLostEvent", ".1.3.6.1.4.1.64711.3.5.201.0.14"},
    {15, "swPowerChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.15"},
    {16, "swAlarmChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.16"},
    {17, "swMacMoveDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.17"},
    {18, "swDuplicatedIpEvent", ".1.3.6.1.4.1.64711.3.5.201.0.18"},
    {19, "swLoopbackDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.19"},
    {20, "swLoopbackNoMoreDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.20"},
    {21, "swUnidirectionalLinkDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.21"},
    {22, "swUnidirectionalLinkRecoveredEvent", ".1.3.6.1.4.1.64711.3.5.201.0.22"},
    {23, "swCriticalEventDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.23"},
    {24, "swCriticalEventRecoveredEvent", ".1.3.6.1.4.1.64711.3.5.201.0.24"},
    {25, "swLinkFlapDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.25"},
    {26, "swLinkFlapNoMoreDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.26"},
    {27, "swLldpRemoteChangedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.27"},
    {28, "risingAlarm", ".1.3.6.1.2.1.16.0.1"},
    {29, "fallingAlarm", ".1.3.6.1.2.1.16.0.2"},
    {30, "swEapsStatusChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.30"},
    {31, "swPortSecViolationEvent", ".1.3.6.1.4.1.64711.3.5.201.0.31"},
    {32, "swCriticalTemperatureDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.32"},
    {33, "swCriticalTemperatureNoMoreDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.33"},
    {34, "swFuseStatusChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.34"},
    {35, "swFansBoardPresenceEvent", ".1.3.6.1.4.1.64711.3.5.201.0.35"},
    {36, "swStandbyMpuPresenceEvent", ".1.3.6.1.4.1.64711.3.5.201.0.36"},
    {38, "swHighCpuUsageDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.38"},
    {39, "swHighCpuUsageNoMoreDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.39"},
    {40, "swHighMemoryUsageDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.40"},
    {41, "swHighMemoryUsageNoMoreDetectedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.41"},
    {42, "swNewBootloaderVersionEvent", ".1.3.6.1.4.1.64711.3.5.201.0.42"},
    {43, "swCfmFaultNotificationEvent", ".1.3.6.1.4.1.64711.3.5.201.0.43"},
    {44, "swRemoteDeviceReadyEvent", ".1.3.6.1.4.1.64711.3.5.201.0.44"},
    {45, "swRemoteDeviceLostEvent", ".1.3.6.1.4.1.64711.3.5.201.0.45"},
    {46, "swRemoteDeviceConfigFailEvent", ".1.3.6.1.4.1.64711.3.5.201.0.46"},
    {47, "swRemoteDeviceConfigForcedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.47"},
    {48, "swFanFuseStatusChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.48"},
    {49, "swL3RouteTableFullEvent", ".1.3.6.1.4.1.64711.3.5.201.0.49"},
    {50, "swEgressTableFullEvent", ".1.3.6.1.4.1.64711.3.5.201.0.50"},
    {71, "swStormControlBroadcastEvent", ".1.3.6.1.4.1.64711.3.5.201.0.71"},
    {72, "swStormControlMulticastEvent", ".1.3.6.1.4.1.64711.3.5.201.0.72"},
    {73, "swBpduProtectLimitReachedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.73"},
    {74, "swBpduProtectTimerExpiredEvent", ".1.3.6.1.4.1.64711.3.5.201.0.74"},
    {75, "swLdpEvent", ".1.3.6.1.4.1.64711.3.5.201.0.75"},
    {76, "swRsvpEvent", ".1.3.6.1.4.1.64711.3.5.201.0.76"},
    {77, "swDyingGaspReceivedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.77"},
    {78, "swErpsStatusChangeEvent", ".1.3.6.1.4.1.64711.3.5.201.0.78"},
    {91, "lldpRemTablesChange", ".1.0.8802.1.1.2.0.0.1"},
    {93, "swCoreDumpEvent", ".1.3.6.1.4.1.64711.3.5.201.0.93"},
    {94, "swEvcStatusNotificationEvent", ".1.3.6.1.4.1.64711.3.5.201.0.94"},
    {95, "swPoeOvercurrentEvent", ".1.3.6.1.4.1.64711.3.5.201.0.95"},
    {96, "swPoeRestrictedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.96"},
    {97, "swL3HostTableFullEvent", ".1.3.6.1.4.1.64711.3.5.201.0.97"},
    {98, "lldpXMedTopologyChangeDetected", ".1.0.8802.1.1.2.1.5.4795.0.1"},
    {130, "swLstLinkDownEvent", ".1.3.6.1.4.1.64711.3.5.201.0.130"},
    {131, "swLstLinkUpEvent", ".1.3.6.1.4.1.64711.3.5.201.0.131"},
    {132, "swSystemWarningsUnitsEvent", ".1.3.6.1.4.1.64711.3.5.201.0.132"},
    {133, "swStackUnitCommFailBlockedEvent", ".1.3.6.1.4.1.64711.3.5.201.0.133"},
    {134, "vrrpTrapNewMaster", ".1.3.6.1.2.1.68.0.1"},
    {135, "vrrpTrapAuthFailure", ".1.3.6.1.2.1.68.0.2"},
};
// clang-format on
static_assert(std::ranges::is_sorted(notifications, std::ranges::less_equal{}, &Notification::id));

} // namespace

const Notification *notification_of(std::uint32_t id)
{
    const auto *found = std::ranges::lower_bound(notifications, id, {}, &Notification::id);
    return found != std::end(notifications) && found->id == id ? found : nullptr;
}

} // namespace switchlab::agent
