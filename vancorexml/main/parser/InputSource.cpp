#include "vancorexml/main/parser/InputSource.h"

InputSource::~InputSource() = default;

IXercesInputSourceProvider::~IXercesInputSourceProvider() = default;
