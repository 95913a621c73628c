// The only code that knows which browser engine hosts the page.
//
// WebView2 (Windows): commands go out through window.chrome.webview.postMessage
// and snapshots arrive as string web messages ('message' events).
// WebKitGTK (Linux): commands go out through the script message handler named
// "launcher" (window.webkit.messageHandlers.launcher.postMessage); the native
// side delivers each snapshot by calling window.__launcherReceive(text).
// Both directions carry JSON text.

export const WEBKIT_HANDLER_NAME = 'launcher';
export const RECEIVE_FUNCTION_NAME = '__launcherReceive';

// Starts listening for the launcher's messages; returns the function that sends one.
export function connectBridge(onMessage) {
  window[RECEIVE_FUNCTION_NAME] = (text) => onMessage(text);
  const webview = window.chrome?.webview;
  if (webview) {
    webview.addEventListener('message', (event) => onMessage(event.data));
    return (text) => webview.postMessage(text);
  }
  const handler = window.webkit?.messageHandlers?.[WEBKIT_HANDLER_NAME];
  if (handler) return (text) => handler.postMessage(text);
  // Opened outside the launcher: nothing to talk to.
  return () => {};
}
