// SPDX-License-Identifier: MIT
#include "platform/macos/browser.h"

#import <AppKit/AppKit.h>

namespace orvanta {

void MacBrowser::open(const QUrl& url) {
    // Without a scheme it is no address, and could be taken for a file.
    if (!url.isValid() || url.scheme().isEmpty()) {
        return;
    }
    const QByteArray text = url.toEncoded();
    // Not the toolkit's QDesktopServices: the terminal front end runs without a GUI application.
    NSURL* const address = [NSURL URLWithString:@(text.constData())];
    if ((address == nil || ![NSWorkspace.sharedWorkspace openURL:address]) && m_complain) {
        m_complain(QStringLiteral("No browser could be opened; the address is %1")
                       .arg(QString::fromUtf8(text)));
    }
}

} // namespace orvanta
