// SPDX-License-Identifier: MIT
'use strict';

const pollMs = 2000;
const element = (id) => document.getElementById(id);

async function showVersion() {
  const reply = await fetch('/demo/environment', { signal: AbortSignal.timeout(pollMs) });
  element('version').textContent = (await reply.json()).version || 'from the sources';
}

async function showStatus() {
  try {
    await showVersion();
    const reply = await fetch('/api/ov/status', { signal: AbortSignal.timeout(pollMs) });
    const text = await reply.text();
    element('document').textContent = text;
    showState(reply.ok ? JSON.parse(text) : { state: `status ${reply.status}` });
  } catch (error) {
    showState({ state: `no usable status (${error.message})` });
  }
}

function showState({ state, workspaceId }) {
  element('state').textContent = state;
  const link = element('workspace');
  if (!link) return;
  link.hidden = !workspaceId;
  link.href = `/workspace/${encodeURIComponent(workspaceId)}`;
  link.textContent = `Workspace ${workspaceId}`;
}

async function press(button) {
  try {
    const reply = await fetch(button.dataset.post, { method: 'POST', body: button.dataset.body || '' });
    element('outcome').textContent = `${button.textContent}: ${reply.status}`;
  } catch (error) {
    element('outcome').textContent = `${button.textContent}: ${error.message}`;
  }
  await showStatus();
}

for (const button of document.querySelectorAll('[data-post]')) {
  button.addEventListener('click', () => press(button));
}
for (const place of document.querySelectorAll('[data-workspace-of-address]')) {
  place.textContent = decodeURIComponent(location.pathname.split('/').pop());
}
showStatus();
setInterval(showStatus, pollMs);
