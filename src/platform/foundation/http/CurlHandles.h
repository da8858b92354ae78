#pragma once

#include "platform/foundation/Handle.h"

#include <curl/curl.h>

namespace cantorel::foundation {

// The handles of libcurl; the only place that names its release functions.
using CurlEasy = Handle<CURL, curl_easy_cleanup>;
using CurlMulti = Handle<CURLM, curl_multi_cleanup>;
using CurlList = Handle<curl_slist, curl_slist_free_all>;

} // namespace cantorel::foundation
