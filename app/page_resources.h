#pragma once
// The page's downloadable resources, refreshed by every synchronisation from
// the patch host into the UI cache folder: locale and flag files, the launcher
// UI document and the cover picture of its patch note. None of them is signed,
// so each lands only below the cache folder and a failure keeps what was there.

#include <string>

#include "net/http_client.h"
#include "patch/patcher_service.h"
#include "text/language.h"
#include "text/ui_document.h"

// "ui/locale/en.json", then "ui/locale/<code>.json" and "ui/flags/<code>.tga"
// for the language, each written through a ".part" file.
void RefreshPageFiles(const net::CHttpClient& http, const patch::CPatcherService& service,
                      text::EPatcherLanguage language, const std::wstring& cacheFolder);

// Fetches and reads "ui.json"; false (and `document` untouched) when either fails.
bool FetchUiDocument(const net::CHttpClient& http, const patch::CPatcherService& service,
                     text::SLauncherUiDocument& document);

// Downloads the cover picture the document names into the cache folder and
// returns its path; empty when there is none, its address is not https (or
// a path on the patch host), its type is not a picture the page can be
// served, or the download failed.
std::wstring DownloadCover(const net::CHttpClient& http, const patch::CPatcherService& service,
                           const std::wstring& coverAddress, const std::wstring& cacheFolder);
