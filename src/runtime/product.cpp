#include "runtime/product.h"

const char* const version_text = VELARIS_VERSION_TEXT;
const char* const build_date = VELARIS_BUILD_DATE;

const char* const built_in_public_keys = VELARIS_PUBLIC_KEYS;
const char* const default_list_host = VELARIS_LIST_HOST;
const char* const maker_site = "www.tarvex.example";
const char* const download_page_url = "http://www.tarvex.example/download.html";
const char* const shop_url = "http://shop.tarvex.example/cart.php?m=product_list&c=3";

std::string app_path;
int g_case_sensitive = 1;
int app_done = 0;
