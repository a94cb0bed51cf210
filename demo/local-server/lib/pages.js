// SPDX-License-Identifier: MIT
'use strict';

const fs = require('fs');
const path = require('path');
const { failure } = require('./reply');

const root = path.join(__dirname, '..');
const files = {
  '/': ['public/index3.html', 'text/html; charset=utf-8'],
  '/dashboard.css': ['public/dashboard.css', 'text/css; charset=utf-8'],
  '/dashboard.js': ['public/dashboard.js', 'text/javascript; charset=utf-8'],
};
const workspacePage = ['views/project-list.html', 'text/html; charset=utf-8'];

/** The dashboard: the start page, the page of a workspace, and what they load. */
function answer({ url, method }) {
  const isWorkspace = /^\/workspace\/[^/]+$/.test(url.pathname);
  const page = isWorkspace ? workspacePage : files[url.pathname];
  if (!page || method !== 'GET') return failure(404, `Nothing at ${method} ${url.pathname}.`);
  const [file, type] = page;
  return { status: 200, type, body: fs.readFileSync(path.join(root, file)) };
}

module.exports = { answer };
