// SPDX-License-Identifier: Apache-2.0
// The region is written here as other daemons do, at fixed places, so that a field that moved is found.
#include <switchcfg/equip.h>
#include <switchcfg/status.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <tuple>

namespace {

class StatusLookup : public ::testing::Test {
  protected:
    StatusLookup()
    {
        // The kernel puts mappings one below the other, so the region lands between two that nobody may touch.
        guard();
        EXPECT_EQ(status_init(), 0);
        guard();
        region = static_cast<std::uint8_t *>(get_status());
        put(9593692, 8);
    }
    ~StatusLookup() override { status_finish(); }

    static void guard()
    {
        EXPECT_NE(::mmap(nullptr, 65536, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), MAP_FAILED);
    }
    void put(int offset, std::int32_t value) { std::memcpy(region + offset, &value, sizeof value); }
    void add_unit(int unit, int model = 1)
    {
        put(unit * 8000 + 48, 1);
        put(unit * 8000 + 52, 1);
        put(unit * 8000 + 1348, model);
    }
    void add_chip(int unit, int k, int punit, int first_modid, int modids)
    {
        const int record = unit * 8000 + 64 + k * 684;
        put(record + 12, punit);
        put(record + 16, first_modid);
        put(record + 20, modids);
    }

    std::uint8_t *region = nullptr;
};

TEST_F(StatusLookup, UnitsAreCountedAndTheLastIsFound)
{
    EXPECT_EQ(status_get_num_units(), 0);
    EXPECT_EQ(status_get_last_connected_unit(), 0);
    add_unit(2);
    add_unit(7);
    EXPECT_EQ(status_get_num_units(), 2);
    EXPECT_EQ(status_get_last_connected_unit(), 7);
    put(9593692, 7);
    EXPECT_EQ(status_get_last_connected_unit(), 2) << "below the maximum only";
    put(9593692, 0);
    EXPECT_EQ(status_get_last_connected_unit(), 0);
    for (const int spoilt : {9, INT_MAX, -1}) {
        put(9593692, spoilt);
        EXPECT_EQ(status_get_last_connected_unit(), 7);
    }
}

TEST_F(StatusLookup, MacNamesTheFirstUnitPresentOrNot)
{
    const std::uint8_t mac[] = {2, 0, 0, 0, 0, 9};
    EXPECT_EQ(status_mac_to_unit(mac), -1);
    std::ranges::copy(mac, region + 5 * 8000 + 760);
    std::ranges::copy(mac, region + 6 * 8000 + 760);
    EXPECT_EQ(status_mac_to_unit(mac), 5);
    put(9593692, 5);
    EXPECT_EQ(status_mac_to_unit(mac), -1);
    EXPECT_EQ(status_mac_to_unit(nullptr), -1);
}

TEST_F(StatusLookup, ModidsLeadToUnitsAndBack)
{
    add_unit(1);
    add_chip(1, 0, 4, 10, 2);
    add_unit(3);
    add_chip(3, 0, 5, 12, 1);
    add_unit(4);
    add_chip(4, 0, 5, 12, 1); // the first one wins
    add_chip(2, 0, 6, 20, 2); // not in the stack
    add_unit(5, 86);          // a model without chips that we know
    add_chip(5, 0, 7, 30, 1);
    for (const auto &[modid, owner, chip] : {std::tuple{9, -1, -1}, {10, 1, 4}, {11, 1, 4}, {12, 3, 5}, {13, -1, -1},
             {20, -1, -1}, {30, -1, -1}, {-1, -1, -1}}) {
        EXPECT_EQ(status_modid_to_unit(modid), owner) << modid;
        EXPECT_EQ(status_modid_to_unit_phys(modid), chip) << modid;
    }
    for (const auto &[chip, modid] : {std::pair{4, 10}, {5, 12}, {6, -1}, {7, -1}}) {
        EXPECT_EQ(status_punit_to_modid(chip), modid) << chip;
    }
    int unit = -1;
    int index = -1;
    EXPECT_EQ(status_unit_phys_to_slot_index(5, &unit, &index), 0);
    EXPECT_EQ(unit, 3);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(status_unit_phys_to_slot_index(6, &unit, &index), -1);
    EXPECT_EQ(unit, 3) << "nothing is stored";

    for (int pport = 0; pport < 64; ++pport) {
        int modid = -1;
        int port = -1;
        ASSERT_EQ(status_phys_unit_port_to_modid_port(4, pport, &modid, &port), 0);
        EXPECT_EQ(modid, pport < 32 ? 10 : 11);
        EXPECT_EQ(port, pport % 32);
        int punit = -1;
        int back = -1;
        ASSERT_EQ(status_modid_port_to_phys_unit_port(modid, port, &punit, &back), 0);
        EXPECT_EQ(punit, 4);
        EXPECT_EQ(back, pport);
        ASSERT_EQ(status_phys_unit_port_to_modid_port(5, pport, &modid, &port), 0);
        EXPECT_EQ(modid, 12);
        EXPECT_EQ(port, pport);
    }
}

TEST_F(StatusLookup, OddModidIsTheSecondOnlyOfAChipWithTwo)
{
    add_unit(0);
    add_chip(0, 0, 1, 11, 1);
    int punit = -1;
    int pport = -1;
    EXPECT_EQ(status_modid_port_to_phys_unit_port(11, 3, &punit, &pport), 0);
    EXPECT_EQ(pport, 3);
    add_chip(0, 0, 1, 11, 2); // the odd one comes first
    for (const auto &[modid, port, expected] : {std::tuple{11, 3, 35}, {11, INT_MAX, INT_MIN + 31}, {12, 3, 3}}) {
        EXPECT_EQ(status_modid_port_to_phys_unit_port(modid, port, &punit, &pport), 0);
        EXPECT_EQ(pport, expected);
    }
    EXPECT_EQ(status_modid_port_to_phys_unit_port(13, 3, &punit, &pport), -1);
    EXPECT_EQ(status_modid_port_to_phys_unit_port(11, 3, nullptr, &pport), -1);
    add_chip(0, 0, 1, INT_MAX, 2);
    EXPECT_EQ(status_modid_to_unit(INT_MAX), 0);
    EXPECT_EQ(status_modid_to_unit(INT_MIN), -1) << "the range of modids does not wrap";
}

TEST_F(StatusLookup, OnlyTheReverseTrustsTheReportedChips)
{
    add_unit(7);
    add_chip(7, 0, 1, 2, 1);
    put(7 * 8000 + 52, 3);
    add_chip(7, 2, 9, 40, 2);
    int modid = -1;
    int port = -1;
    EXPECT_EQ(status_phys_unit_port_to_modid_port(9, 33, &modid, &port), 0);
    EXPECT_EQ(modid, 41);
    EXPECT_EQ(port, 1);
    EXPECT_EQ(status_punit_to_modid(9), -1) << "the model has one chip";
    put(7 * 8000 + 52, 0);
    EXPECT_EQ(status_phys_unit_port_to_modid_port(1, 0, &modid, &port), -1);
    for (const int spoilt : {INT_MAX, INT_MIN}) {
        put(7 * 8000 + 52, spoilt);
        EXPECT_EQ(status_phys_unit_port_to_modid_port(12345, 0, &modid, &port), -1);
    }
}

TEST_F(StatusLookup, CpuPortIsTheLowestBit)
{
    EXPECT_EQ(status_get_cpu_port(2, 0), 256);
    put(2 * 8000 + 64 + 376 + 28, static_cast<std::int32_t>(0x80000000U));
    EXPECT_EQ(status_get_cpu_port(2, 0), 255);
    put(2 * 8000 + 64 + 376 + 4, 0x30);
    EXPECT_EQ(status_get_cpu_port(2, 0), 36);
    for (const auto &[unit, chip] : {std::pair{8, 0}, {-1, 0}, {2, -1}, {7, 5000}}) {
        EXPECT_EQ(status_get_cpu_port(unit, chip), 256);
    }
}

TEST_F(StatusLookup, PortRecordsLieWhereTheirDaemonsPutThem)
{
    EXPECT_EQ(tcv_status_get_pointer(7, 51), region + 7 * 8000 + 1415 + 51 * 102);
    const std::int32_t handle = -5;
    EXPECT_EQ(status_set_tcv_handle(1, 51, handle), 0);
    EXPECT_EQ(std::memcmp(region + 8000 + 7820 + 51 * 4, &handle, sizeof handle), 0);
    EXPECT_EQ(status_get_tcv_handle(1, 51), handle);

    add_unit(7, 3); // 24 ports
    std::uint8_t *const records = region + 8180348 + 7 * 14352;
    std::memset(records - 276, 0xaa, 26 * 276);
    EXPECT_EQ(status_init_port_info_by_unit(7), 0);
    EXPECT_TRUE(std::all_of(records, records + 24 * 276, [](std::uint8_t byte) { return byte == 0; }));
    EXPECT_EQ(records[-1], 0xaa);
    EXPECT_EQ(records[24 * 276], 0xaa);
}

TEST_F(StatusLookup, HardwareIdentityAndRemoval)
{
    put(6 * 8000 + 1344, 12);
    put(6 * 8000 + 1348, 85);
    std::strcpy(reinterpret_cast<char *>(region) + 6 * 8000 + 1352, "a board");
    EXPECT_EQ(status_get_hw_version(6), 12);
    EXPECT_EQ(status_get_hw_model_num(6), 85);
    EXPECT_STREQ(status_get_hw_model(6), "a board");
    for (const int removed : {77, 0}) {
        EXPECT_EQ(status_set_logical_removal(6, removed), 0);
        EXPECT_EQ(status_get_logical_removal(6) != 0, removed != 0);
        EXPECT_EQ(status_get_logical_removal(5), 0);
    }
    EXPECT_EQ(status_wait_for_bcmd_init(), 0);
}

TEST_F(StatusLookup, BadUnitsAndPortsAreRefused)
{
    for (const int bad : {8, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(tcv_status_get_pointer(bad, 0), nullptr);
        EXPECT_EQ(status_get_tcv_handle(bad, 0), -3);
        EXPECT_EQ(status_set_tcv_handle(bad, 0, 1), -3);
        EXPECT_EQ(status_get_hw_version(bad), -3);
        EXPECT_EQ(status_get_hw_model_num(bad), -3);
        EXPECT_EQ(status_get_hw_model(bad), nullptr);
        EXPECT_EQ(status_init_port_info_by_unit(bad), 0);
        EXPECT_EQ(status_get_logical_removal(bad), 0);
        EXPECT_EQ(status_set_logical_removal(bad, 1), -3);
    }
    for (const int bad : {52, -1, INT_MAX}) {
        EXPECT_EQ(tcv_status_get_pointer(0, bad), nullptr);
        EXPECT_EQ(status_get_tcv_handle(0, bad), -3);
        EXPECT_EQ(status_set_tcv_handle(0, bad, 1), -3);
    }
}

TEST_F(StatusLookup, SecondInitKeepsTheMappingAndWithoutItNothingIsFound)
{
    EXPECT_EQ(status_init(), 0);
    EXPECT_EQ(get_status(), region);
    EXPECT_EQ(status_sync(), 0);
    EXPECT_EQ(status_finish(), 0);
    EXPECT_EQ(get_status(), nullptr);
    EXPECT_EQ(status_sync(), 0);
    int first = 0;
    int second = 0;
    EXPECT_EQ(status_get_num_units(), 0);
    EXPECT_EQ(status_get_last_connected_unit(), 0);
    EXPECT_EQ(status_modid_to_unit(0), -1);
    EXPECT_EQ(status_phys_unit_port_to_modid_port(0, 0, &first, &second), -1);
    EXPECT_EQ(status_get_cpu_port(0, 0), 256);
    EXPECT_EQ(status_init_port_info_by_unit(0), 0);
    EXPECT_EQ(tcv_status_get_pointer(0, 0), nullptr);
    EXPECT_EQ(status_get_tcv_handle(0, 0), 0);
    EXPECT_EQ(status_set_tcv_handle(0, 0, 1), -3);
    EXPECT_EQ(status_get_hw_model_num(0), 0);
    EXPECT_EQ(status_get_hw_model(0), nullptr);
}

} // namespace
