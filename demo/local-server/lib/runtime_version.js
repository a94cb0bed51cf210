// SPDX-License-Identifier: MIT
'use strict';

const fs = require('fs');
const path = require('path');

const file = path.join(__dirname, '..', 'runtime.json');

/** The version that this runtime was made as; null when it was started from the sources. */
function runtimeVersion() {
  return fs.existsSync(file) ? JSON.parse(fs.readFileSync(file, 'utf8')).version : null;
}

module.exports = { runtimeVersion };
