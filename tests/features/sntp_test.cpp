// SPDX-License-Identifier: Apache-2.0
#include "support/file_text.h"
#include "support/peer.h"

#include <switchcfg/pm_client.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/sntp.h>

#include <sys/mount.h>

namespace {

using namespace switchcfg::testing;

constexpr std::size_t servers = 41844;
constexpr std::size_t keys = 41896;
constexpr std::size_t words = 42064;
constexpr std::size_t key_size = 56;
constexpr std::size_t bound = 39;

// Answers each request with the result in /tmp/answer, 0 without it, and adds it to /tmp/requests.
int take_note(void *, int fd)
{
    pm_request record{};
    if (vx_read_timeout(fd, &record, sizeof record, 5) != 0) {
        return -1;
    }
    const std::string answer = file_text("/tmp/answer");
    record.result = answer.empty() ? 0 : std::stoi(answer);
    write_file("/tmp/requests", file_text("/tmp/requests") + std::to_string(record.command) + " " + record.name + " " +
                                    std::to_string(record.value) + "\n");
    return vx_write(fd, &record, sizeof record);
}

class Sntp : public ::testing::Test {
  protected:
    void SetUp() override
    {
        manager = std::make_unique<Peer>([](Link &link) {
            const daemon_server server{PM_CLIENT_PORT, 100000, &link,
                [](void *told) {
                    static_cast<Link *>(told)->tell();
                    return 0;
                },
                take_note};
            daemon_server_loop(&server);
        });
        ASSERT_TRUE(manager->await());
        ASSERT_EQ(cfg_init(), 0);
        config = static_cast<std::uint8_t *>(cfg_get_cfg());
        defaults = static_cast<std::uint8_t *>(cfg_get_default_cfg());
    }

    // What the process manager was asked since the last time.
    static std::string asked()
    {
        const std::string requests = file_text("/tmp/requests");
        std::filesystem::remove("/tmp/requests");
        return requests;
    }
    // A result with it.
    using Done = std::pair<int, std::string>;
    static Done done(int result, const std::string &requests) { return {result, requests}; }
    static Done with_asked(int result) { return {result, asked()}; }
    static std::string server(int slot)
    {
        char text[SNTP_ADDRESS_TEXT_SIZE] = "";
        return sntp_dump_server_ip_addr(slot, text) == 0 ? text : "-";
    }
    std::uint32_t word(int slot, int which) const
    {
        std::uint32_t value;
        std::memcpy(&value, config + words + static_cast<std::size_t>(slot * 8 + which * 4), sizeof value);
        return value;
    }
    void set_words() const
    {
        for (std::uint32_t i = 0; i < 6; ++i) {
            const std::uint32_t value = 100 + i;
            std::memcpy(config + words + 4 * i, &value, sizeof value);
        }
    }

    std::unique_ptr<Peer> manager;
    std::uint8_t *config = nullptr;
    std::uint8_t *defaults = nullptr;
};

const std::string on = "7 sntpd 1\n";
const std::string off = "7 sntpd 0\n";

TEST_F(Sntp, SettingsStandWhereTheyBelongAndAreApplied)
{
    defaults[41788] = 1;
    std::uint32_t interval = 64;
    std::memcpy(defaults + 41789, &interval, 4);
    EXPECT_EQ(cfg_is_default_sntp_enable(), 0);
    EXPECT_EQ(with_asked(cfg_set_sntp_enable(1)), done(0, off)) << "on, but without a server";
    EXPECT_EQ(with_asked(cfg_add_sntp_server("192.0.2.1")), done(0, on));
    EXPECT_EQ(config[41788], 1);
    EXPECT_EQ(cfg_is_default_sntp_enable(), 1);
    EXPECT_EQ(with_asked(cfg_set_sntp_interval(0x01020304)), done(0, on)) << "every change is applied";
    std::memcpy(&interval, config + 41789, 4);
    EXPECT_EQ(interval, 0x01020304U) << "in the machine's byte order";
    EXPECT_EQ(cfg_get_sntp_interval(), 0x01020304U);
    EXPECT_EQ(cfg_is_default_sntp_interval(), 0);
    EXPECT_EQ(cfg_set_default_sntp_interval(), 0);
    EXPECT_EQ(cfg_get_sntp_interval(), 64U);
    EXPECT_EQ(cfg_get_default_sntp_interval(), 64U);
    EXPECT_EQ(cfg_set_sntp_auth_enable(1), 0);
    EXPECT_EQ(config[41895], 1);
    EXPECT_EQ(cfg_is_default_sntp_auth_enable(), 0);
    EXPECT_EQ(cfg_set_default_sntp_auth_enable(), 0);
    EXPECT_EQ(cfg_get_sntp_auth_enable(), 0);
    EXPECT_EQ(cfg_set_sntp_enable(0), 0);
    EXPECT_EQ(with_asked(cfg_get_sntp_enable()), done(0, on + on + on + off));
}

TEST_F(Sntp, FailuresOfTheManagerAreTranslatedAndChangeNothingBack)
{
    for (const auto &[answer, code] : {std::pair{"-1", -37}, {"-2", -8}, {"-3", -43}, {"-5", -2}, {"-99", -1}}) {
        write_file("/tmp/answer", answer);
        EXPECT_EQ(cfg_set_sntp_interval(7), code);
        EXPECT_EQ(cfg_get_sntp_interval(), 7U);
    }
    write_file("/tmp/answer", "3");
    EXPECT_EQ(cfg_set_sntp_interval(8), 0) << "only negative answers are failures";
    EXPECT_EQ(cfg_sntp_undefine_key_server("all"), 0);
    std::filesystem::remove("/tmp/answer");
    ASSERT_TRUE(std::filesystem::remove(SNTP_KEY_FILE));
    ASSERT_EQ(::mkdir(SNTP_KEY_FILE, 0755), 0);
    EXPECT_EQ(cfg_set_sntp_interval(9), -44);
    EXPECT_EQ(asked().substr(0, 10), off) << "the daemon is switched nevertheless";
    EXPECT_EQ(cfg_sntp_add_key(1, "MD5", "x"), 0) << "the key is configured; who uses it is told";
    EXPECT_EQ(cfg_get_sntp_key_id(0), 1) << "the key is there";
    manager->kill9();
    EXPECT_EQ(apply_sntp(), -37) << "wins over the file's";
    EXPECT_EQ(cfg_sntp_remove_key(1), -44) << "the file's alone";
}

TEST_F(Sntp, ServersFillTheSlotsAndLeaveNoGaps)
{
    for (const char *const bad : {"", "host", "1.2.3", "1.2.3.4.5", "256.1.1.1", "::1::", "all", "1.2.3.4 "}) {
        EXPECT_EQ(cfg_add_sntp_server(bad), -7) << bad;
        EXPECT_EQ(cfg_del_sntp_server(bad), -7);
        EXPECT_EQ(cfg_sntp_clear_key_server(bad), -7);
        EXPECT_EQ(sntp_find_server_index(bad), -7);
    }
    EXPECT_EQ(asked(), "");
    EXPECT_EQ(cfg_add_sntp_server(nullptr), -7);
    EXPECT_EQ(cfg_add_sntp_server("2001:db8::1"), 0);
    EXPECT_EQ(cfg_add_sntp_server("2001:0DB8:0:0:0:0:0:1"), -5) << "the same address";
    EXPECT_EQ(cfg_add_sntp_server("192.0.2.2"), 0);
    EXPECT_EQ(cfg_add_sntp_server("::ffff:192.0.2.2"), 0) << "not the same";
    EXPECT_EQ(cfg_add_sntp_server("192.0.2.2"), -5) << "before the limit";
    EXPECT_EQ(cfg_add_sntp_server("192.0.2.4"), -9);
    const std::uint8_t second[17] = {192, 0, 2, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4};
    EXPECT_EQ(std::memcmp(config + servers + 17, second, 17), 0);
    EXPECT_EQ(config[servers + 16], 16);
    set_words();
    EXPECT_EQ(cfg_del_sntp_server("2001:db8::1"), -8) << "the first stays";
    EXPECT_EQ(cfg_del_sntp_server("192.0.2.9"), -8);
    EXPECT_EQ(cfg_del_sntp_server("192.0.2.2"), 0);
    EXPECT_EQ(server(0) + server(1) + server(2), "2001:db8::1::ffff:192.0.2.2-");
    EXPECT_EQ(word(1, 0), 104U) << "the words move along";
    EXPECT_EQ(word(1, 1), 105U);
    EXPECT_EQ(word(2, 0) + word(2, 1), 0U);
    EXPECT_EQ(sntp_has_server(1), 1);
    for (const int slot : {2, 3, -1}) {
        EXPECT_EQ(sntp_has_server(slot), 0);
        EXPECT_EQ(server(slot), "-");
    }
    EXPECT_EQ(sntp_find_server_index("::ffff:192.0.2.2"), 1);
    EXPECT_EQ(sntp_find_server_index("192.0.2.2"), -1);
    config[servers + 16] = 200; // spoilt by somebody
    EXPECT_EQ(server(0), "-");
    EXPECT_EQ(sntp_has_server(0), 1);
}

TEST_F(Sntp, ClearingTakesTheFirstServerToo)
{
    cfg_set_error_msg_enable(1);
    for (const char *const address : {"192.0.2.1", "192.0.2.2", "192.0.2.3"}) {
        ASSERT_EQ(cfg_add_sntp_server(address), 0);
    }
    ASSERT_EQ(cfg_sntp_add_key(5, "MD5", "five"), 0);
    ASSERT_EQ(cfg_sntp_define_key_server(5, "192.0.2.1"), 0);
    set_words();
    (void)asked();
    EXPECT_EQ(with_asked(cfg_sntp_clear_key_server("192.0.2.1")), done(0, off)) << "for the binding only";
    EXPECT_EQ(server(0) + " " + server(1) + " " + server(2), "192.0.2.2 192.0.2.3 -");
    EXPECT_EQ(word(0, 0), 102U);
    EXPECT_EQ(word(2, 1), 0U);
    EXPECT_EQ(cfg_get_sntp_server_key("192.0.2.1"), 0);
    EXPECT_EQ(with_asked(cfg_sntp_clear_key_server("192.0.2.3")), done(0, ""));
    EXPECT_EQ(cfg_sntp_clear_key_server("192.0.2.3"), -8);
    EXPECT_STREQ(cfg_error_get_msg(), "No server configured for that IP address");

    ASSERT_EQ(cfg_sntp_define_key_server(5, "192.0.2.2"), 0);
    write_file("/tmp/answer", "-3");
    EXPECT_EQ(cfg_sntp_clear_key_server("192.0.2.2"), -43);
    EXPECT_EQ(server(0), "192.0.2.2") << "an error of the binding comes first";
    EXPECT_EQ(cfg_sntp_clear_key_server("192.0.2.2"), 0) << "the binding is gone now";
    ASSERT_EQ(cfg_add_sntp_server("192.0.2.7"), -43);
    set_words();
    (void)asked();
    EXPECT_EQ(with_asked(cfg_sntp_clear_all_server()), done(0, off + off + off)) << "three bindings";
    EXPECT_EQ(sntp_has_any_server(), 0);
    EXPECT_EQ(word(0, 0) + word(2, 1), 0U);
}

TEST_F(Sntp, KeysHaveLimits)
{
    // The identifier comes first, and length before emptiness.
    const std::tuple<std::uint32_t, const char *, const char *, int> rows[] = {{0, "waytoolong", "", -7},
        {1, "123456789", "v", -32}, {1, "", "123456789", -32}, {1, "", "v", -7}, {1, "t", "", -7},
        {1, nullptr, "v", -7}, {1, "12345678", "abcdefgh", 0}, {1, "t", "v", -5}, {4294967295U, "SHA1", "secret", 0}};
    for (const auto &[id, type, value, result] : rows) {
        EXPECT_EQ(cfg_sntp_add_key(id, type, value), result) << id << ' ' << value;
    }
    EXPECT_EQ(asked(), "") << "the daemon is not touched";
    EXPECT_EQ(file_text(SNTP_KEY_FILE), "          1\t   12345678\t   abcdefgh \n"
                                        " 4294967295\t       SHA1\t     secret \n");
    EXPECT_EQ(cfg_sntp_add_key(3, "t", "v"), 0);
    EXPECT_EQ(cfg_sntp_add_key(4, "t", "v"), -9);
    EXPECT_EQ(cfg_get_sntp_key_id(1), -1) << "32 bits";
    EXPECT_STREQ(cfg_get_sntp_key_type(1), "SHA1");
    EXPECT_STREQ(cfg_get_sntp_key_value(1), "secret");
    for (const int slot : {3, -1}) {
        EXPECT_EQ(cfg_get_sntp_key_id(slot), -6);
        EXPECT_EQ(cfg_set_sntp_key_id(slot, 1), -6);
        EXPECT_EQ(cfg_set_sntp_key_type(slot, "123456789"), -6);
        EXPECT_EQ(cfg_set_sntp_key_value(slot, ""), -6);
    }
    EXPECT_EQ(cfg_set_sntp_key_type(0, "123456789"), -32);
    EXPECT_EQ(cfg_set_sntp_key_value(0, ""), -7);
    EXPECT_EQ(cfg_set_sntp_key_type(0, "MD5"), 0);
    EXPECT_STREQ(cfg_get_sntp_key_type(0), "MD5");
    std::memset(config + keys + 4, 'x', 18); // both texts without an end
    EXPECT_EQ(apply_sntp(), 0);
    EXPECT_EQ(file_text(SNTP_KEY_FILE).substr(0, 38), "          1\t   xxxxxxxx\t   xxxxxxxx \n ");
}

TEST_F(Sntp, BindingsFollowTheirKeys)
{
    ASSERT_EQ(cfg_sntp_add_key(5, "MD5", "five"), 0);
    ASSERT_EQ(cfg_sntp_add_key(6, "MD5", "six"), 0);
    EXPECT_EQ(cfg_sntp_define_key_server(0, "nonsense"), -7);
    EXPECT_EQ(cfg_sntp_define_key_server(0, "192.0.2.1"), -8) << "no key has this identifier, free records included";
    EXPECT_EQ(cfg_sntp_define_key_server(7, "192.0.2.1"), -8);
    EXPECT_EQ(with_asked(cfg_sntp_define_key_server(6, "2001:db8::1")), done(0, off));
    EXPECT_EQ(config[keys + key_size + bound + 16], 16);
    EXPECT_EQ(sntp_find_key_index("2001:db8:0::1"), 1);
    EXPECT_EQ(cfg_get_sntp_server_key("2001:db8::1"), 6);
    EXPECT_EQ(cfg_get_sntp_server_key("192.0.2.1"), 0);
    EXPECT_EQ(cfg_get_sntp_server_key("x"), -7);
    EXPECT_EQ(sntp_find_key_index("192.0.2.1"), -1);
    EXPECT_EQ(sntp_find_key_index("x"), -7);
    EXPECT_EQ(cfg_sntp_undefine_key_server("x"), -7);
    EXPECT_EQ(with_asked(cfg_sntp_undefine_key_server("192.0.2.1")), done(0, "")) << "nothing was bound";
    EXPECT_EQ(cfg_sntp_undefine_key_server("2001:db8::1"), 0);
    EXPECT_EQ(cfg_get_sntp_server_key("2001:db8::1"), 0);

    ASSERT_EQ(cfg_sntp_define_key_server(6, "192.0.2.6"), 0);
    (void)asked();
    EXPECT_EQ(cfg_sntp_remove_key(0), -8);
    EXPECT_EQ(cfg_sntp_remove_key(7), -8);
    EXPECT_EQ(with_asked(cfg_sntp_remove_key(6)), done(0, off));
    const std::uint8_t nothing[key_size] = {};
    EXPECT_EQ(std::memcmp(config + keys + key_size, nothing, key_size), 0) << "the whole record";
    EXPECT_EQ(file_text(SNTP_KEY_FILE), "          5\t        MD5\t       five \n");

    ASSERT_EQ(cfg_sntp_define_key_server(5, "192.0.2.5"), 0);
    ASSERT_EQ(cfg_set_sntp_key_id(0, 0), 0);
    ASSERT_EQ(cfg_sntp_add_key(8, "MD5", "eight"), 0);
    EXPECT_EQ(cfg_get_sntp_server_key("192.0.2.5"), 0) << "a new key has no old binding";
    EXPECT_EQ(cfg_sntp_remove_key(8), 0);
    EXPECT_TRUE(std::filesystem::exists(SNTP_KEY_FILE));
    EXPECT_EQ(file_text(SNTP_KEY_FILE), "");
}

TEST_F(Sntp, LegacyTextsAndRecordsConvert)
{
    const auto legacy = [&](std::size_t offset) { return reinterpret_cast<char *>(config + offset); };
    std::strcpy(legacy(41793), "192.0.2.1");
    std::memcpy(legacy(41793 + 17), "2001:db8:1:2::345", 17); // fills the field
    std::strcpy(legacy(41793 + 34), "no address");
    std::memset(config + servers + 34, 7, 17);
    std::strcpy(legacy(keys + 22), "192.0.2.1");
    std::memset(config + keys + key_size + bound, 7, 17);
    EXPECT_EQ(cfg_sntp_compatibility(), 0);
    EXPECT_EQ(server(0) + " " + server(1) + " " + server(2), "192.0.2.1 2001:db8:1:2::345 -");
    EXPECT_EQ(sntp_has_server(2), 0);
    EXPECT_EQ(config[keys + bound], 192);
    EXPECT_EQ(config[keys + key_size + bound + 16], 0);
    EXPECT_EQ(asked(), "") << "a conversion applies nothing";

    std::memcpy(defaults + keys + key_size + bound, config + keys + bound, 17);
    std::memcpy(config + keys + key_size + bound, config + keys + bound, 17);
    std::memcpy(config + keys + 2 * key_size + bound, config + servers + 17, 17);
    for (const std::size_t slot : {0U, 1U, 2U}) {
        std::memset(legacy(41793 + 17 * slot), 'x', 17);
        std::memset(legacy(keys + key_size * slot + 22), 'x', 17);
    }
    EXPECT_EQ(cfg_sntp_backward_compatibility(), 0);
    const char first[17] = "192.0.2.1";
    const char none[17] = "";
    EXPECT_EQ(std::memcmp(legacy(41793), first, 17), 0);
    EXPECT_EQ(std::memcmp(legacy(41793 + 17), none, 17), 0) << "older releases know no IPv6";
    EXPECT_EQ(std::memcmp(legacy(41793 + 34), none, 17), 0);
    EXPECT_EQ(std::memcmp(legacy(keys + 22), first, 17), 0);
    EXPECT_EQ(std::memcmp(legacy(keys + key_size + 22), none, 17), 0) << "the default";
    EXPECT_EQ(std::memcmp(legacy(keys + 2 * key_size + 22), none, 17), 0);

    char text[SNTP_ADDRESS_TEXT_SIZE] = "kept";
    EXPECT_EQ(sntp_dump_lastOk_ip_addr(text), -1);
    EXPECT_STREQ(text, "kept");
    auto *const record = static_cast<std::uint8_t *>(get_status()) + 64092;
    const std::uint8_t address[17] = {192, 0, 2, 99, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 4};
    std::memcpy(record, address, 17);
    EXPECT_EQ(sntp_dump_lastOk_ip_addr(text), 0);
    EXPECT_STREQ(text, "192.0.2.99");
    EXPECT_EQ(sntp_dump_lastOk_ip_addr(nullptr), -1);
    EXPECT_EQ(sntp_set_lastOk_ip_addr("nobody"), -7);
    EXPECT_EQ(sntp_set_lastOk_ip_addr("192.0.2.98"), 0);
    EXPECT_EQ(record[3], 98);
    EXPECT_EQ(record[4], 0) << "the whole record";
}

struct Rights {
    mode_t mode;
    uid_t owner;
    gid_t group;
    bool operator==(const Rights &) const = default;
};

Rights rights_of(const char *path)
{
    struct stat info {};
    EXPECT_EQ(::stat(path, &info), 0);
    return {info.st_mode & 07777, info.st_uid, info.st_gid};
}

TEST_F(Sntp, TheKeyFileKeepsItsSecretsAndItsPlace)
{
    ::umask(0);
    ASSERT_EQ(cfg_sntp_add_key(1, "MD5", "one"), 0);
    EXPECT_EQ(rights_of(SNTP_KEY_FILE), (Rights{0600, ::geteuid(), ::getegid()}));
    ASSERT_EQ(::chmod(SNTP_KEY_FILE, 0666), 0);
    ASSERT_EQ(cfg_sntp_add_key(2, "MD5", "two"), 0);
    EXPECT_EQ(rights_of(SNTP_KEY_FILE).mode, 0640U);
    ASSERT_EQ(::chmod(SNTP_KEY_FILE, 0400), 0);
    ASSERT_EQ(cfg_sntp_remove_key(2), 0);
    EXPECT_EQ(rights_of(SNTP_KEY_FILE).mode, 0400U);

    const std::string one = "          1\t        MD5\t        one \n";
    ASSERT_EQ(::unlink(SNTP_KEY_FILE), 0);
    ASSERT_EQ(::mkdir("/mnt/flash/keys", 0755), 0);
    ASSERT_EQ(::symlink("/mnt/flash/keys/here", SNTP_KEY_FILE), 0);
    for (const char *const when : {"leads nowhere yet", "leads to a file"}) {
        ASSERT_EQ(apply_sntp(), 0);
        EXPECT_TRUE(std::filesystem::is_symlink(SNTP_KEY_FILE)) << when;
        EXPECT_EQ(file_text("/mnt/flash/keys/here"), one) << when;
    }
    ASSERT_EQ(::unlink(SNTP_KEY_FILE), 0);
    write_file(SNTP_KEY_FILE, std::string(200, '#'));
    EXPECT_EQ(::chmod(SNTP_KEY_FILE, 0644), 0);
    if (::mount(SNTP_KEY_FILE, SNTP_KEY_FILE, nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "a file cannot be mounted on itself here";
    }
    EXPECT_EQ(apply_sntp(), 0);
    EXPECT_EQ(file_text(SNTP_KEY_FILE), one) << "a mounted file cannot be replaced, so it is written in place";
    EXPECT_EQ(rights_of(SNTP_KEY_FILE).mode, 0640U);
    for (const auto &entry : std::filesystem::directory_iterator{"/etc"}) {
        EXPECT_FALSE(entry.path().filename().string().starts_with("ntp.keys.")) << entry.path();
    }
}

TEST_F(Sntp, AReaderSeesWholeKeyFilesOnly)
{
    ASSERT_EQ(cfg_sntp_add_key(1, "MD5", "one"), 0);
    const std::string one = file_text(SNTP_KEY_FILE);
    const Peer writer{[](Link &link) {
        link.tell();
        for (;;) {
            cfg_sntp_add_key(2, "MD5", "two");
            cfg_sntp_remove_key(2);
        }
    }};
    ASSERT_TRUE(writer.await());
    const std::string both = one + "          2\t        MD5\t        two \n";
    int changes = 0;
    std::string before;
    for (int i = 0; i < 100000 && changes < 20; ++i) {
        const std::string seen = file_text(SNTP_KEY_FILE);
        ASSERT_TRUE(seen == one || seen == both) << seen;
        changes += seen != before ? 1 : 0;
        before = seen;
    }
    EXPECT_GE(changes, 2) << "the writer was at work";
}

TEST(SntpUnmapped, NothingIsThereAndNothingBreaks)
{
    EXPECT_EQ(cfg_get_sntp_interval(), 0U);
    EXPECT_EQ(cfg_set_sntp_enable(1), -1);
    EXPECT_EQ(apply_sntp(), -1);
    EXPECT_EQ(cfg_add_sntp_server("192.0.2.1"), -1);
    EXPECT_EQ(cfg_sntp_clear_key_server("192.0.2.1"), -8);
    EXPECT_EQ(cfg_sntp_clear_all_server(), -1);
    EXPECT_EQ(cfg_sntp_undefine_key_server("all"), -1);
    EXPECT_EQ(cfg_get_sntp_key_type(0), nullptr);
    EXPECT_EQ(cfg_sntp_add_key(1, "t", "v"), -1);
    EXPECT_EQ(cfg_sntp_remove_key(1), -8);
    EXPECT_EQ(sntp_has_any_server(), 0);
    EXPECT_EQ(cfg_sntp_backward_compatibility(), -1);
    EXPECT_FALSE(std::filesystem::exists(SNTP_KEY_FILE));
}

} // namespace
