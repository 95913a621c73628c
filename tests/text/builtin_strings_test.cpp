#include "text/builtin_strings.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "text/utf.h"

namespace {

struct SExpected {
  const char* key;
  const char8_t* text;
};

// The last-resort table as the interface requires it, entry for entry.
constexpr SExpected kExpected[] = {
    {"patch", u8"تحديث اللعبة"},
    {"start_game", u8"بدء اللعبة"},
    {"repair", u8"إصلاح"},
    {"news", u8"الأخبار"},
    {"events", u8"الأحداث"},
    {"news_events", u8"الأخبار والأحداث"},
    {"patch_notes", u8"ملاحظات التحديث"},
    {"patch_available", u8"هنالك تحديث جديد"},
    {"ready_to_patch", u8"جاهز للتحديث"},
    {"syncing_patch_state", u8"مزامنة حالة التحديث"},
    {"preparing_patch", u8"تحضير التحديث"},
    {"up_to_date", u8"محدث"},
    {"checking_for_updates", u8"جاري البحث عن التحديثات"},
    {"downloading", u8"جاري التحميل"},
    {"applying_patch", u8"تطبيق التحديث"},
    {"complete", u8"مكتمل"},
    {"maintenance", u8"صيانة"},
    {"connection_lost", u8"تم فقدان الاتصال"},
    {"retry", u8"إعادة المحاولة"},
    {"close", u8"إغلاق"},
    {"open_news", u8"فتح الأخبار"},
    {"open_events", u8"فتح الأحداث"},
    {"status", u8"الحالة"},
    {"language", u8"اللغة"},
    {"feed_empty", u8"لا توجد مدخلات حية متاحة حالياً."},
    {"build", u8"بناء"},
    {"patch_ready", u8"اللعبة جاهزة للتشغيل."},
    {"version", u8"الإصدار"},
    {"files", u8"الملفات"},
    {"transfer_speed", u8"السرعة"},
    {"eta", u8"ETA"},
    {"scanning", u8"Scanning"},
    {"finalizing", u8"Finalizing"},
    {"starting_game", u8"جاري تشغيل اللعبة"},
    {"patching", u8"تحديث"},
    {"latest_stories", u8"أحدث القصص"},
    {"latest_feed", u8"أحدث الأخبار"},
    {"connecting_to_server", u8"الاتصال بالخادم"},
    {"loading_latest_launcher_data", u8"تحميل أحدث بيانات المشغل"},
    {"close_game_before_patch", u8"قم بإغلاق اللعبة قبل التحديث"},
    {"close_game_before_patch_detail", u8"قم بإغلاق اللعبة بشكل كامل من التاسك مانجر قبل تحديثها"},
};

std::string Bytes(std::u8string_view text) { return std::string(text.begin(), text.end()); }

// Both forms, entry for entry: the UTF-8 list in order and the wide lookup table.
TEST(BuiltinStrings, HoldExactlyTheRequiredEntries) {
  const auto list = text::BuiltinStrings();
  const text::StringTable& table = text::BuiltinStringTable();
  ASSERT_EQ(list.size(), 41u);
  ASSERT_EQ(table.size(), 41u);
  for (size_t i = 0; i < list.size(); ++i) {
    const SExpected& expected = kExpected[i];
    EXPECT_EQ(list[i].key, expected.key) << "entry " << i;
    EXPECT_EQ(Bytes(list[i].text), Bytes(expected.text)) << expected.key;
    const auto found = table.find(text::Utf8ToWide(expected.key));
    ASSERT_NE(found, table.end()) << expected.key;
    EXPECT_EQ(text::WideToUtf8(found->second), Bytes(expected.text)) << expected.key;
  }
}

}  // namespace
